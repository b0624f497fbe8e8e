#ifndef ORVABASE_OCVARIANT_H
#define ORVABASE_OCVARIANT_H

#include "OCBoolean.h"
#include "OCInteger.h"
#include "OCMemoryBuffer.h"
#include "OCWideString.h"

#include <iosfwd>

/// What a variant holds, and in an object of which class: `OCBoolean`, `OCSignedInteger`,
/// `OCUnsignedInteger`, `OCMemoryBuffer`, `OCAnsiString`, `OCWideString`.
enum OEVariantType : int {
    VariantTypeUnassigned = 0,
    VariantTypeBoolean = 1,
    VariantTypeSignedInteger = 2,
    VariantTypeUnsignedInteger = 3,
    VariantTypeMemoryBuffer = 4,
    VariantTypeAnsiString = 5,
    VariantTypeWideString = 6
};

/// The storage of a variant: a type and an object that it owns. The two are set apart from each
/// other; whoever sets them keeps them in step. Not for use by several threads at once.
///
///     OCVariantData data;
///     data.setObject(new OCBoolean(true));
///     data.setType(VariantTypeBoolean);
///     OCVariantData copy(data);   // holds an OCBoolean of its own
class ORVABASE_EXPORT OCVariantData : public OCObject {
public:
    /// Unassigned, without an object.
    OCVariantData() noexcept : type(VariantTypeUnassigned), object(nullptr) {}
    /// A deep copy, by `assign`.
    OCVariantData(const OCVariantData& other);
    OCVariantData& operator=(const OCVariantData& other) { return assign(other); }
    /// Deletes the object, if there is one, whatever the type is.
    ~OCVariantData() noexcept override;

    /// Takes `other`'s type and a copy of its object, made as an object of the type's class; what
    /// was held before is deleted. A type without an object, and any type that is none of
    /// `OEVariantType`, is taken alone. Data assigned to itself stays as it is.
    /// @throws OXMemory_AllocationError, and OXVariant_TypeMismatch when `other`'s object is not of
    /// the class that its type says; nothing is changed then.
    OCVariantData& assign(const OCVariantData& other);
    /// Sets the type to unassigned and deletes the object. Does nothing while the type is
    /// unassigned.
    void clear() noexcept;

    /// The type of what is held.
    OEVariantType getType() const noexcept { return type; }
    /// Sets the type; the object stays.
    void setType(OEVariantType newType) noexcept { type = newType; }
    /// The object, which stays the data's own; null when there is none.
    OCObject* getObject() const noexcept { return object; }
    /// Takes ownership of `newObject`, which may be null.
    ///
    /// Note: the object that was held is not deleted. It is the caller's again.
    void setObject(OCObject* newObject) noexcept { object = newObject; }

private:
    static OCObject* copyObject(const OCVariantData& other);

    OEVariantType type;
    OCObject* object;
};

/// Holds at most one value of one of six kinds, as a copy of its own.
///
/// Reading a value of another kind than the one held is an error. Copies are deep. Not for use by
/// several threads at once.
///
///     OCVariant variant;
///     variant.setStringAnsi("abc");
///     variant.getType();          // VariantTypeAnsiString
///     variant.getStringAnsi();    // abc
///     variant.getStringWide();    // throws OXVariant_TypeMismatch
class ORVABASE_EXPORT OCVariant : public OCObject {
public:
    /// Unassigned.
    /// @throws OXMemory_AllocationError
    OCVariant();
    OCVariant(const OCVariant& other);
    OCVariant& operator=(const OCVariant& other) { return assign(other); }
    ~OCVariant() noexcept override;

    /// Takes a copy of the value that `other` holds. A variant assigned to itself stays as it is.
    /// @throws OXMemory_AllocationError when memory is exhausted; nothing is changed then.
    OCVariant& assign(const OCVariant& other);
    /// Drops the value.
    void clear() noexcept { data->clear(); }

    /// The type of what is held.
    OEVariantType getType() const noexcept { return data->getType(); }
    /// Whether a value is held.
    bool isAssigned() const noexcept { return getType() != VariantTypeUnassigned; }

    /// Replace the value by a copy of the argument, which may be the value held.
    /// @throws OXMemory_AllocationError when memory is exhausted; nothing is changed then.
    void setBoolean(const OCBoolean& value);
    void setIntegerSigned(const OCSignedInteger& value);
    void setIntegerUnsigned(const OCUnsignedInteger& value);
    void setMemoryBuffer(const OCMemoryBuffer& value);
    void setStringAnsi(const OCAnsiString& value);
    void setStringWide(const OCWideString& value);

    /// The value held; the reference lasts until the variant is changed.
    /// @throws OXVariant_TypeMismatch when the variant holds no value, or one of another kind.
    const OCBoolean& getBoolean() const;
    const OCSignedInteger& getIntegerSigned() const;
    const OCUnsignedInteger& getIntegerUnsigned() const;
    const OCMemoryBuffer& getMemoryBuffer() const;
    const OCAnsiString& getStringAnsi() const;
    const OCWideString& getStringWide() const;

protected:
    /// The constructors and the destructor are made of these steps.
    void initialize();
    void initializeData();
    void destroy() noexcept;
    void destroyData() noexcept;

private:
    void setObject(OEVariantType type, OCObject* object) noexcept;
    const OCObject& getObject(OEVariantType type) const;

    OCVariantData* data;
};

/// Writes the value as its class does; nothing for a memory buffer and for an unassigned variant.
ORVABASE_EXPORT std::ostream& operator<<(std::ostream& stream, const OCVariant& variant);

/// The family of the variant's failures.
class ORVABASE_EXPORT OXVariant : public OXAutoException {
public:
    ~OXVariant() noexcept override;

protected:
    OXVariant();
};

/// "Variant type mismatch": the variant does not hold a value of the kind asked for.
class ORVABASE_EXPORT OXVariant_TypeMismatch : public OXVariant {
public:
    OXVariant_TypeMismatch();
    ~OXVariant_TypeMismatch() noexcept override;
};

#endif
