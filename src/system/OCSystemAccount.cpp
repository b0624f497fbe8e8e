#include "OCSystemAccount.h"

#include "OCSystemError.h"

#include <cerrno>

#include <unistd.h>

OXSystemAbstractAccount::OXSystemAbstractAccount() = default;
OXSystemAbstractAccount::~OXSystemAbstractAccount() noexcept = default;

OXSystemUserAccount::OXSystemUserAccount() = default;
OXSystemUserAccount::~OXSystemUserAccount() noexcept = default;

OXSystemUserAccount_FindUserError::OXSystemUserAccount_FindUserError() {
    setClass("OXSystemUserAccount_FindUserError");
    setMessage("Error finding user account");
}
OXSystemUserAccount_FindUserError::OXSystemUserAccount_FindUserError(unsigned int code)
    : OXSystemUserAccount_FindUserError() {
    getDetails().addString(systemErrorText(code));
}
OXSystemUserAccount_FindUserError::~OXSystemUserAccount_FindUserError() noexcept = default;

OXSystemUserAccount_InitializeBufferError::OXSystemUserAccount_InitializeBufferError(
    unsigned int code) {
    setClass("OXSystemUserAccount_InitializeBufferError");
    setMessage("Error initializing buffer for user account");
    getDetails().addString(systemErrorText(code));
}
OXSystemUserAccount_InitializeBufferError::~OXSystemUserAccount_InitializeBufferError() noexcept =
    default;

OXSystemGroupAccount::OXSystemGroupAccount() = default;
OXSystemGroupAccount::~OXSystemGroupAccount() noexcept = default;

OXSystemGroupAccount_FindGroupError::OXSystemGroupAccount_FindGroupError() {
    setClass("OXSystemGroupAccount_FindGroupError");
    setMessage("Error finding group account");
}
OXSystemGroupAccount_FindGroupError::OXSystemGroupAccount_FindGroupError(unsigned int code)
    : OXSystemGroupAccount_FindGroupError() {
    getDetails().addString(systemErrorText(code));
}
OXSystemGroupAccount_FindGroupError::~OXSystemGroupAccount_FindGroupError() noexcept = default;

OXSystemGroupAccount_InitializeBufferError::OXSystemGroupAccount_InitializeBufferError(
    unsigned int code) {
    setClass("OXSystemGroupAccount_InitializeBufferError");
    setMessage("Error initializing buffer for group account");
    getDetails().addString(systemErrorText(code));
}
OXSystemGroupAccount_InitializeBufferError::~OXSystemGroupAccount_InitializeBufferError() noexcept =
    default;

namespace {

/// Gives `buffer` the size that the system suggests for an account's texts.
template<class InitializeError>
void sizeBuffer(OCMemoryBuffer& buffer, int name) {
    errno = 0; // "no limit" leaves it
    const long size = sysconf(name);
    if (size <= 0) {
        const int code = errno;
        throw InitializeError(static_cast<unsigned int>(code));
    }
    buffer.setSize(static_cast<unsigned long>(size));
}

/// Looks an account up with one of the C library's functions. Without success `record` is empty.
template<class FindError, class Record, class Key, class Call>
void findRecord(Record& record, OCMemoryBuffer& buffer, Key key, Call call) {
    record = Record();
    Record* found = nullptr;
    const int result = call(key, &record, buffer.getData(), buffer.getSize(), &found);
    if (result == 0 && found != nullptr)
        return;
    const int code = errno;
    record = Record(); // it may hold parts of other accounts
    if (result != 0)
        throw FindError(static_cast<unsigned int>(code));
    throw FindError();
}

OCAnsiString nameOf(const char* name) {
    return name == nullptr ? OCAnsiString() : OCAnsiString(name);
}

} // namespace

OCSystemAbstractAccount::~OCSystemAbstractAccount() = default;

OCSystemUserAccount::OCSystemUserAccount(const OCAnsiString& name) : record() {
    initialize();
    findByName(name);
}

OCSystemUserAccount::OCSystemUserAccount(unsigned int identifier) : record() {
    initialize();
    findByIdentifier(identifier);
}

OCSystemUserAccount::~OCSystemUserAccount() noexcept = default;

void OCSystemUserAccount::initialize() {
    initializeBuffer();
}

void OCSystemUserAccount::initializeBuffer() {
    record = passwd(); // its texts are in the buffer
    sizeBuffer<OXSystemUserAccount_InitializeBufferError>(buffer, _SC_GETPW_R_SIZE_MAX);
}

void OCSystemUserAccount::findByName(const OCAnsiString& name) {
    findRecord<OXSystemUserAccount_FindUserError>(record, buffer, name.getString(), getpwnam_r);
}

void OCSystemUserAccount::findByIdentifier(unsigned int identifier) {
    findRecord<OXSystemUserAccount_FindUserError>(record, buffer, identifier, getpwuid_r);
}

OCAnsiString OCSystemUserAccount::getName() const {
    return nameOf(record.pw_name);
}

OCSystemGroupAccount::OCSystemGroupAccount(const OCAnsiString& name) : record() {
    initialize();
    findByName(name);
}

OCSystemGroupAccount::OCSystemGroupAccount(unsigned int identifier) : record() {
    initialize();
    findByIdentifier(identifier);
}

OCSystemGroupAccount::~OCSystemGroupAccount() noexcept = default;

void OCSystemGroupAccount::initialize() {
    initializeBuffer();
}

void OCSystemGroupAccount::initializeBuffer() {
    record = group(); // its texts are in the buffer
    sizeBuffer<OXSystemGroupAccount_InitializeBufferError>(buffer, _SC_GETGR_R_SIZE_MAX);
}

void OCSystemGroupAccount::findByName(const OCAnsiString& name) {
    findRecord<OXSystemGroupAccount_FindGroupError>(record, buffer, name.getString(), getgrnam_r);
}

void OCSystemGroupAccount::findByIdentifier(unsigned int identifier) {
    findRecord<OXSystemGroupAccount_FindGroupError>(record, buffer, identifier, getgrgid_r);
}

OCAnsiString OCSystemGroupAccount::getName() const {
    return nameOf(record.gr_name);
}
