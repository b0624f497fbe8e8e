#ifndef ORVABASE_OCCORERING_H
#include "OCCoreRing.h" // comes back here when strings and lists are complete
#elif ORVABASE_CORE_RING_HALF == 2

/// The root of every failure that the library reports.
///
/// Exceptions are thrown by value and caught by reference:
///
///     try {
///         path.extractDrive();
///     } catch (const OXException& failure) {
///         std::cerr << failure.getClass() << ": " << failure.getMessage() << '\n';
///     }
class ORVABASE_EXPORT OXException : public OCObject {
public:
    ~OXException() noexcept override;

    /// The name of the exception's class, such as `OXString_NoSuchIndex`.
    virtual OCAnsiString getClass() const = 0;
    /// One line that says what failed, with the details of this occurrence in parentheses.
    virtual OCAnsiString getMessage() const = 0;

protected:
    OXException() noexcept = default;
    OXException(const OXException&) noexcept = default;
    OXException& operator=(const OXException&) noexcept = default;
};

/// An exception that carries its class name, a fixed message and a list of details: the index, the
/// name, the path or the operating system's error text of this occurrence.
///
/// All exceptions but `OXMemory_AllocationError` derive from it. A class of an application joins
/// the tree the same way as the library's own do: the constructor sets the class name and the
/// message and adds its arguments to the details.
///
///     class OXSensor_NoSignal : public OXAutoException {
///     public:
///         explicit OXSensor_NoSignal(const OCAnsiString& port) {
///             setClass("OXSensor_NoSignal");
///             setMessage("The sensor does not answer");
///             getDetails().addString(port);
///         }
///         ~OXSensor_NoSignal() noexcept override = default;
///     };
///
/// An exception belongs to the thread that handles it.
class ORVABASE_EXPORT OXAutoException : public OXException {
public:
    /// An exception without texts: the constructors of derived classes set them.
    OXAutoException();
    OXAutoException(const OXAutoException& other);
    OXAutoException& operator=(const OXAutoException& other);
    ~OXAutoException() noexcept override;

    /// A copy of the class name.
    OCAnsiString getClass() const override;

    /// The message; if there are details, a space and the details in parentheses follow it,
    /// separated by a comma and a space: `Error loading dynamic library (a.so, not found)`. An
    /// empty detail counts. If the text cannot be composed (memory is exhausted, a detail is a null
    /// string), it is the message alone.
    OCAnsiString getMessage() const override;

    /// The details in the order added. A handler may add its own before it rethrows.
    OCStringList& getDetails() { return details; }
    const OCStringList& getDetails() const { return details; }

    /// Replaces the class name.
    /// @throws OXMemory_AllocationError when memory is exhausted; nothing is changed then.
    void setClass(const OCAnsiString& name) { className = name; }
    /// Replaces the message.
    /// @throws OXMemory_AllocationError when memory is exhausted; nothing is changed then.
    void setMessage(const OCAnsiString& text) { message = text; }

private:
    OCAnsiString className;
    OCAnsiString message;
    OCStringList details;
};

#endif
