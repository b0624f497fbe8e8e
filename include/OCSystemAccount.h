#ifndef ORVABASE_OCSYSTEMACCOUNT_H
#define ORVABASE_OCSYSTEMACCOUNT_H

#include "OCMemoryBuffer.h"
#include "OXSystem.h"

#include <grp.h>
#include <pwd.h>

/// The common base of user and group accounts.
class ORVABASE_EXPORT OCSystemAbstractAccount : public OCObject {
public:
    OCSystemAbstractAccount(const OCSystemAbstractAccount&) = delete;
    OCSystemAbstractAccount& operator=(const OCSystemAbstractAccount&) = delete;
    ~OCSystemAbstractAccount() override;

    /// The account's name.
    /// @throws OXMemory_AllocationError
    virtual OCAnsiString getName() const = 0;

protected:
    OCSystemAbstractAccount() noexcept = default;
};

/// One user of the system's account database, found by name or by number.
///
/// The object keeps what it found. A look-up that fails leaves it without an account: the name is
/// empty and the identifier 0 then. The space for an account's texts is what the system suggests;
/// an account that needs more is not found (`ERANGE`). Not for use by several threads at once;
/// different objects may be.
///
///     OCSystemUserAccount account("www-data");
///     OCSystemProcess::setUserIdentifier(account.getIdentifier());
class ORVABASE_EXPORT OCSystemUserAccount : public OCSystemAbstractAccount {
public:
    /// Find an account, as the operations below do.
    /// @throws OXSystemUserAccount_InitializeBufferError when the system does not tell the size of
    /// the texts, and what the operations below throw.
    explicit OCSystemUserAccount(const OCAnsiString& name);
    explicit OCSystemUserAccount(unsigned int identifier);
    ~OCSystemUserAccount() noexcept override;

    /// Find another account.
    /// @throws OXSystemUserAccount_FindUserError with the system's text when the database cannot be
    /// asked, without details when there is no such user.
    void findByName(const OCAnsiString& name);
    void findByIdentifier(unsigned int identifier);

    OCAnsiString getName() const override;
    /// The number of the account.
    unsigned int getIdentifier() const { return record.pw_uid; }

    /// The step of construction that asks the system for the size of the texts and makes the space
    /// for them. Afterwards the object is without an account.
    /// @throws OXSystemUserAccount_InitializeBufferError
    void initialize();
    void initializeBuffer();

private:
    struct passwd record;
    OCMemoryBuffer buffer;
};

/// One group of the system's account database, found by name or by number. It is used as
/// `OCSystemUserAccount` is.
///
///     OCSystemGroupAccount(0u).getName();   // root
class ORVABASE_EXPORT OCSystemGroupAccount : public OCSystemAbstractAccount {
public:
    /// Find an account, as the operations below do.
    /// @throws OXSystemGroupAccount_InitializeBufferError when the system does not tell the size of
    /// the texts, and what the operations below throw.
    explicit OCSystemGroupAccount(const OCAnsiString& name);
    explicit OCSystemGroupAccount(unsigned int identifier);
    ~OCSystemGroupAccount() noexcept override;

    /// Find another account.
    /// @throws OXSystemGroupAccount_FindGroupError with the system's text when the database cannot
    /// be asked (or the group has too many members for the space), without details when there is no
    /// such group.
    void findByName(const OCAnsiString& name);
    void findByIdentifier(unsigned int identifier);

    OCAnsiString getName() const override;
    /// The number of the account.
    unsigned int getIdentifier() const { return record.gr_gid; }

    /// The step of construction that asks the system for the size of the texts and makes the space
    /// for them. Afterwards the object is without an account.
    /// @throws OXSystemGroupAccount_InitializeBufferError
    void initialize();
    void initializeBuffer();

private:
    struct group record;
    OCMemoryBuffer buffer;
};

/// The family of the failures of accounts.
class ORVABASE_EXPORT OXSystemAbstractAccount : public OXSystem {
public:
    ~OXSystemAbstractAccount() noexcept override;

protected:
    OXSystemAbstractAccount();
};

/// The family of the failures of user accounts.
class ORVABASE_EXPORT OXSystemUserAccount : public OXSystemAbstractAccount {
public:
    ~OXSystemUserAccount() noexcept override;

protected:
    OXSystemUserAccount();
};

/// "Error finding user account", with the system's text unless there simply is no such user.
class ORVABASE_EXPORT OXSystemUserAccount_FindUserError : public OXSystemUserAccount {
public:
    OXSystemUserAccount_FindUserError();
    explicit OXSystemUserAccount_FindUserError(unsigned int code);
    ~OXSystemUserAccount_FindUserError() noexcept override;
};

/// "Error initializing buffer for user account", with the system's text.
class ORVABASE_EXPORT OXSystemUserAccount_InitializeBufferError : public OXSystemUserAccount {
public:
    explicit OXSystemUserAccount_InitializeBufferError(unsigned int code);
    ~OXSystemUserAccount_InitializeBufferError() noexcept override;
};

/// The family of the failures of group accounts.
class ORVABASE_EXPORT OXSystemGroupAccount : public OXSystemAbstractAccount {
public:
    ~OXSystemGroupAccount() noexcept override;

protected:
    OXSystemGroupAccount();
};

/// "Error finding group account", with the system's text unless there simply is no such group.
class ORVABASE_EXPORT OXSystemGroupAccount_FindGroupError : public OXSystemGroupAccount {
public:
    OXSystemGroupAccount_FindGroupError();
    explicit OXSystemGroupAccount_FindGroupError(unsigned int code);
    ~OXSystemGroupAccount_FindGroupError() noexcept override;
};

/// "Error initializing buffer for group account", with the system's text.
class ORVABASE_EXPORT OXSystemGroupAccount_InitializeBufferError : public OXSystemGroupAccount {
public:
    explicit OXSystemGroupAccount_InitializeBufferError(unsigned int code);
    ~OXSystemGroupAccount_InitializeBufferError() noexcept override;
};

#endif
