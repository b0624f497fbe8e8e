#ifndef ORVABASE_OCAPPLICATIONARGUMENTS_H
#define ORVABASE_OCAPPLICATIONARGUMENTS_H

#include "OCVector.h"

/// What a command-line argument is.
enum OEApplicationArgumentType : int {
    ApplicationArgumentTypeShort = 0,        ///< `-v`, `-o=file`
    ApplicationArgumentTypeLong = 1,         ///< `--verbose`, `--output=file`
    ApplicationArgumentTypeMiscellaneous = 2 ///< anything else
};

/// One argument of a command line: an option with its name and perhaps a value, or a plain
/// (miscellaneous) argument, whose text is its value.
///
/// A value: copies are independent. For use by one thread at a time.
///
///     OCApplicationArgument argument;
///     argument.setName("level");
///     argument.setValue("3");
///     argument.setType(ApplicationArgumentTypeLong);
class ORVABASE_EXPORT OCApplicationArgument : public OCObject {
public:
    /// A miscellaneous argument without a value.
    OCApplicationArgument() noexcept : type(ApplicationArgumentTypeMiscellaneous) {}
    OCApplicationArgument(const OCApplicationArgument&) = default;
    OCApplicationArgument& operator=(const OCApplicationArgument&) = default;
    ~OCApplicationArgument() noexcept override;

    /// The option's name without its dashes; empty for a miscellaneous argument.
    const OCAnsiString& getName() const { return name; }
    /// The option's value, empty when none was given, or the miscellaneous argument's text.
    const OCAnsiString& getValue() const { return value; }
    /// What the argument is.
    OEApplicationArgumentType getType() const { return type; }
    /// Whether the text is not empty.
    bool hasName() const { return name.getLength() != 0; }
    bool hasValue() const { return value.getLength() != 0; }

    /// Replace one field.
    /// @throws OXMemory_AllocationError when memory is exhausted; nothing is changed then.
    void setName(const OCAnsiString& text) { name = text; }
    void setValue(const OCAnsiString& text) { value = text; }
    void setType(OEApplicationArgumentType newType) { type = newType; }

private:
    friend class OCApplicationArgumentList;

    OCApplicationArgument(OEApplicationArgumentType itsType, const char* itsName,
                          unsigned long nameLength, const char* itsValue, unsigned long valueLength)
        : name(itsName, nameLength), value(itsValue, valueLength), type(itsType) {}

    OCAnsiString name;
    OCAnsiString value;
    OEApplicationArgumentType type;
};

/// The arguments of a program's command line in their order, taken apart into short options, long
/// options and plain arguments.
///
/// No argument is an error. The forms that are understood:
///
/// | argument     | what it gives                                                         |
/// |--------------|-----------------------------------------------------------------------|
/// | `-abc`       | the short options `a`, `b` and `c`                                    |
/// | `-o=file`    | the short option `o` with the value `file`                            |
/// | `-vo=file`   | the short option `v`, then `o` with the value `file`                  |
/// | `--all`      | the long option `all`                                                 |
/// | `--out=file` | the long option `out` with the value `file`                           |
/// | `--x=1`      | the short option `x` with the value `1`: the name is one character    |
/// | `--`, `--=x` | nothing                                                               |
/// | `file`, `-`  | a miscellaneous argument                                              |
///
/// Note: `--` is dropped and does not end the options, and the argument behind an option is never
/// its value.
///
/// The list owns its arguments. Nothing but exhausted memory makes adding fail, and what was added
/// by the same call before that stays, unless an operation says otherwise. Not for use by several
/// threads at once.
///
///     int main(int argc, char** argv) {
///         OCApplicationArgumentList arguments;
///         arguments.assign(argc, argv);
///         for (unsigned long i = 0; i < arguments.getCount(); ++i) {
///             const OCApplicationArgument& argument = arguments.getArgument(i);
///             if (argument.getType() == ApplicationArgumentTypeMiscellaneous)
///                 addFile(argument.getValue());
///         }
///     }
class ORVABASE_EXPORT OCApplicationArgumentList : public OCObject {
public:
    /// An empty list.
    OCApplicationArgumentList() noexcept {}
    OCApplicationArgumentList(const OCApplicationArgumentList&) = delete;
    OCApplicationArgumentList& operator=(const OCApplicationArgumentList&) = delete;
    ~OCApplicationArgumentList() noexcept override;

    /// Replaces the list by the arguments of `main`. The first one, the program's name, is not
    /// looked at; with `argc` below 2 the list is empty afterwards. A null pointer ends the
    /// arguments, whatever `argc` says, and so does a null `argv`.
    /// @throws OXMemory_AllocationError when memory is exhausted; nothing is changed then.
    void assign(int argc, char** argv);
    /// Replaces the list by the pieces of one text, which spaces separate and which must not be
    /// null. There is no quoting, and other white space belongs to the pieces.
    ///
    /// Note: unlike in the other form, the first piece counts. The first character of the text is
    /// not taken as a separator: ` -a` is a plain argument that begins with a space.
    /// @throws OXMemory_AllocationError when memory is exhausted; nothing is changed then.
    void assign(const char* commandLine);
    /// Takes one argument apart and adds what it gives.
    /// @throws OXMemory_AllocationError
    void addArgument(const OCAnsiString& argument);

    /// The number of arguments.
    unsigned long getCount() const { return arguments.getCount(); }
    /// Whether there are none.
    bool isEmpty() const { return arguments.getCount() == 0; }
    /// The argument at `index`, which stays the list's.
    /// @throws OXVector_NoSuchIndex
    OCApplicationArgument& getArgument(unsigned long index) {
        return static_cast<OCApplicationArgument&>(arguments.getElement(index));
    }
    const OCApplicationArgument& getArgument(unsigned long index) const {
        return static_cast<const OCApplicationArgument&>(arguments.getElement(index));
    }
    /// Deletes all arguments.
    void clear();

    /// @name The steps of addArgument
    /// @{

    /// Whether the text has two characters or more and begins with exactly one `-`.
    bool isOptionShort(const OCAnsiString& argument) const;
    /// Whether the text begins with two `-`.
    bool isOptionLong(const OCAnsiString& argument) const;
    /// Takes a long option without its dashes apart at the first `=`. False, with the name and the
    /// value untouched, when that is the first character. A text without `=` is a name without a
    /// value.
    /// @throws OXMemory_AllocationError when memory is exhausted; nothing is changed then.
    bool splitOptionLong(const OCAnsiString& option, OCAnsiString& name, OCAnsiString& value) const;
    /// Add the options of a text that `isOptionShort` or `isOptionLong` has approved of, or a plain
    /// argument. The dashes are not looked at again.
    /// @throws OXMemory_AllocationError
    void parseOptionShort(const OCAnsiString& argument);
    void parseOptionLong(const OCAnsiString& argument);
    void parseMiscellaneous(const OCAnsiString& argument);
    /// Add one argument.
    /// @throws OXMemory_AllocationError when memory is exhausted; nothing is changed then.
    void appendOptionShort(const OCAnsiString& name, const OCAnsiString& value);
    void appendOptionLong(const OCAnsiString& name, const OCAnsiString& value);
    void appendMiscellaneous(const OCAnsiString& argument);
    /// @}

private:
    // The steps on plain characters.
    void add(const char* text, unsigned long length);
    void addShort(const char* text, unsigned long length);
    void addLong(const char* text, unsigned long length);
    void append(OEApplicationArgumentType type, const char* name, unsigned long nameLength,
                const char* value, unsigned long valueLength);
    void take(OCApplicationArgumentList& other);

    OCVector arguments;
};

#endif
