#ifndef ORVABASE_OCENVIRONMENT_H
#define ORVABASE_OCENVIRONMENT_H

#include "OCNamedList.h"
#include "OCStringArray.h"

/// One environment variable of the running process.
///
/// The environment belongs to the whole process and is not locked: no thread may read it while
/// another one sets or deletes a variable.
///
///     OCEnvironmentVariable language("LANG");
///     language.getValue("C");     // C when it is not set
///     language.setValue("en_US.UTF-8");
class ORVABASE_EXPORT OCEnvironmentVariable : public OCObject {
public:
    /// Refers to the variable by its name, whether it is set or not.
    /// @throws OXMemory_AllocationError
    explicit OCEnvironmentVariable(const OCAnsiString& variable) : name(variable) {}
    OCEnvironmentVariable(const OCEnvironmentVariable&) = default;
    OCEnvironmentVariable& operator=(const OCEnvironmentVariable&) = default;
    ~OCEnvironmentVariable() noexcept override;

    /// The value, which may be empty.
    /// @throws OXEnvironmentVariable_GetValue when the variable is not set,
    /// OXMemory_AllocationError
    OCAnsiString getValue() const;
    /// The value, which may be empty, or `defaultValue` when the variable is not set.
    /// @throws OXMemory_AllocationError
    OCAnsiString getValue(const OCAnsiString& defaultValue) const;
    /// Sets the variable, whether it was set before or not.
    /// @throws OXEnvironmentVariable_SetValue when the name is empty or has a `=`, or memory is
    /// exhausted; the variable is unchanged then.
    void setValue(const OCAnsiString& value);
    /// Removes the variable from the environment. The result is that of `unsetenv`: 0, also for a
    /// variable that was not set, or -1 when the name is empty or has a `=`.
    ///
    /// Note: a failure is told by the result only. Never throws.
    int deleteVariable() noexcept;

private:
    OCAnsiString name;
};

/// A set of environment variables, for a new process. Names are case-sensitive, and the variables
/// are in the order of their names.
///
/// Not for use by several threads at once.
///
///     OCEnvironmentBlock block;
///     block.readProcessEnvironment();
///     block.getVariables().setValue("PATH", "/usr/bin");
///     OCEnvironmentBufferArray environment(block);
///     execve("/usr/bin/env", arguments, environment.getBuffer());
class ORVABASE_EXPORT OCEnvironmentBlock : public OCObject {
public:
    /// No variables.
    OCEnvironmentBlock() : variables(NamedListCaseSensitive, NamedListModeSorted) {}
    OCEnvironmentBlock(const OCEnvironmentBlock&) = delete;
    OCEnvironmentBlock& operator=(const OCEnvironmentBlock&) = delete;
    ~OCEnvironmentBlock() noexcept override;

    /// The variables, to be looked at and changed.
    OCNamedList& getVariables() { return variables; }
    const OCNamedList& getVariables() const { return variables; }

    /// Adds the running process's variables; one that is there already gets the process's value.
    ///
    /// Note: variables with an empty value are left out, so that a new process does not get them.
    /// @throws OXEnvironmentBlock_ReadProcessEnvironment when the process has no environment at
    /// all, OXMemory_AllocationError (a part of the variables may have been added then).
    void readProcessEnvironment();

private:
    OCNamedList variables;
};

/// A set of environment variables in the form that `execve` expects: a null-terminated array of
/// `NAME=VALUE` strings, built at once.
///
/// Note: variables with an empty value are left out.
class ORVABASE_EXPORT OCEnvironmentBufferArray : public OCObject {
public:
    /// The variables in the order of the list.
    /// @throws OXMemory_AllocationError
    explicit OCEnvironmentBufferArray(const OCEnvironmentBlock& block);
    explicit OCEnvironmentBufferArray(const OCNamedList& list);
    OCEnvironmentBufferArray(const OCEnvironmentBufferArray&) = delete;
    OCEnvironmentBufferArray& operator=(const OCEnvironmentBufferArray&) = delete;
    ~OCEnvironmentBufferArray() noexcept override;

    /// The array: one pointer a variable, and a null pointer. It lasts as long as the object.
    char** getBuffer() { return strings.getBuffer(); }
    char* const* getBuffer() const { return strings.getBuffer(); }

    /// The steps of the construction: add the variables of `list` to those that are there.
    /// @throws OXMemory_AllocationError (a part of the variables may have been added then).
    void initialize(const OCNamedList& list);
    void initializeStrings(const OCNamedList& list);

private:
    OCStringArray strings;
};

/// A set of environment variables in one run of bytes, built at once: `NAME=VALUE` and a zero byte
/// for each, and another zero byte at the end. Without variables it is one zero byte.
///
/// Note: variables with an empty value are left out.
///
///     block.getVariables().setValue("A", "1");
///     block.getVariables().setValue("B", "2");
///     OCEnvironmentBufferSerial(block).getBuffer();   // "A=1\0B=2\0"
class ORVABASE_EXPORT OCEnvironmentBufferSerial : public OCObject {
public:
    /// The variables in the order of the list.
    /// @throws OXMemory_AllocationError
    explicit OCEnvironmentBufferSerial(const OCEnvironmentBlock& block);
    explicit OCEnvironmentBufferSerial(const OCNamedList& list);
    OCEnvironmentBufferSerial(const OCEnvironmentBufferSerial&) = delete;
    OCEnvironmentBufferSerial& operator=(const OCEnvironmentBufferSerial&) = delete;
    ~OCEnvironmentBufferSerial() noexcept override;

    /// The bytes. They last as long as the object.
    char* getBuffer() { return entries.getString(); }
    const char* getBuffer() const { return entries.getString(); }

    /// The steps of the construction: add the variables of `list` to those that are there.
    /// @throws OXMemory_AllocationError; nothing is changed then.
    void initialize(const OCNamedList& list);
    void initializeStrings(const OCNamedList& list);

private:
    OCAnsiString entries;
};

/// The family of the failures of environment blocks.
class ORVABASE_EXPORT OXEnvironmentBlock : public OXAutoException {
public:
    ~OXEnvironmentBlock() noexcept override;

protected:
    OXEnvironmentBlock();
};

/// "Error reading process environment variables": there is no environment.
class ORVABASE_EXPORT OXEnvironmentBlock_ReadProcessEnvironment : public OXEnvironmentBlock {
public:
    OXEnvironmentBlock_ReadProcessEnvironment();
    ~OXEnvironmentBlock_ReadProcessEnvironment() noexcept override;
};

/// The family of the failures of environment variables.
class ORVABASE_EXPORT OXEnvironmentVariable : public OXAutoException {
public:
    ~OXEnvironmentVariable() noexcept override;

protected:
    OXEnvironmentVariable();
};

/// "Error deleting environment variable", with the name. The library itself does not throw it.
class ORVABASE_EXPORT OXEnvironmentVariable_DeleteVariable : public OXEnvironmentVariable {
public:
    explicit OXEnvironmentVariable_DeleteVariable(const OCAnsiString& name);
    ~OXEnvironmentVariable_DeleteVariable() noexcept override;
};

/// "Error getting value of environment variable", with the name: it is not set.
class ORVABASE_EXPORT OXEnvironmentVariable_GetValue : public OXEnvironmentVariable {
public:
    explicit OXEnvironmentVariable_GetValue(const OCAnsiString& name);
    ~OXEnvironmentVariable_GetValue() noexcept override;
};

/// "Error setting value of environment variable", with the name.
class ORVABASE_EXPORT OXEnvironmentVariable_SetValue : public OXEnvironmentVariable {
public:
    explicit OXEnvironmentVariable_SetValue(const OCAnsiString& name);
    ~OXEnvironmentVariable_SetValue() noexcept override;
};

#endif
