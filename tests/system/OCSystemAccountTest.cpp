#include "OCSystemAccount.h"
#include "support/AccountCalls.h"
#include "support/Exceptions.h"
#include "support/FaultInjection.h"
#include "support/Slots.h"
#include "support/SystemProcessCalls.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <type_traits>

namespace {

std::string standard(const OCAnsiString& text) {
    return std::string(text.getString(), text.getLength());
}

/// A user or a group, for the tests that go for both alike.
struct User {
    typedef OCSystemUserAccount Account;
    typedef struct passwd Record;
    typedef OXSystemUserAccount Family;
    typedef OXSystemUserAccount_FindUserError FindError;
    typedef OXSystemUserAccount_InitializeBufferError BufferError;
    static constexpr const char* findMessage = "Error finding user account";
    static constexpr const char* bufferMessage = "Error initializing buffer for user account";
    static constexpr int sizeName = _SC_GETPW_R_SIZE_MAX;
    static auto& byName() { return calls::getpwnam_r; }
    static auto& byIdentifier() { return calls::getpwuid_r; }
    static void fill(Record* record, char* name, unsigned int identifier) {
        record->pw_name = name;
        record->pw_uid = identifier;
    }
    static bool isEmpty(const Record& record) {
        return record.pw_name == nullptr && record.pw_passwd == nullptr && record.pw_uid == 0 &&
               record.pw_gid == 0 && record.pw_gecos == nullptr && record.pw_dir == nullptr &&
               record.pw_shell == nullptr;
    }
    static std::string firstName() { return getpwuid(0)->pw_name; }
    static std::map<std::string, unsigned int> everyAccount() {
        std::map<std::string, unsigned int> all;
        setpwent();
        while (const struct passwd* each = getpwent())
            all.emplace(each->pw_name, each->pw_uid);
        endpwent();
        return all;
    }
    static std::string nameOf(unsigned int identifier) { return getpwuid(identifier)->pw_name; }
};

struct Group {
    typedef OCSystemGroupAccount Account;
    typedef struct group Record;
    typedef OXSystemGroupAccount Family;
    typedef OXSystemGroupAccount_FindGroupError FindError;
    typedef OXSystemGroupAccount_InitializeBufferError BufferError;
    static constexpr const char* findMessage = "Error finding group account";
    static constexpr const char* bufferMessage = "Error initializing buffer for group account";
    static constexpr int sizeName = _SC_GETGR_R_SIZE_MAX;
    static auto& byName() { return calls::getgrnam_r; }
    static auto& byIdentifier() { return calls::getgrgid_r; }
    static void fill(Record* record, char* name, unsigned int identifier) {
        record->gr_name = name;
        record->gr_gid = identifier;
    }
    static bool isEmpty(const Record& record) {
        return record.gr_name == nullptr && record.gr_passwd == nullptr && record.gr_gid == 0 &&
               record.gr_mem == nullptr;
    }
    static std::string firstName() { return getgrgid(0)->gr_name; }
    static std::map<std::string, unsigned int> everyAccount() {
        std::map<std::string, unsigned int> all;
        setgrent();
        while (const struct group* each = getgrent())
            all.emplace(each->gr_name, each->gr_gid);
        endgrent();
        return all;
    }
    static std::string nameOf(unsigned int identifier) { return getgrgid(identifier)->gr_name; }
};

template<class Kind>
class OCSystemAccountTest : public testing::Test {};

typedef testing::Types<User, Group> Kinds;
struct KindNames {
    template<class Kind>
    static std::string GetName(int) {
        return std::is_same_v<Kind, User> ? "User" : "Group";
    }
};

TYPED_TEST_SUITE(OCSystemAccountTest, Kinds, KindNames);

const char unknownName[] = "no-such-account-of-orvabase";
constexpr unsigned int unknownIdentifier = 3999999999u;

/// The result of an operation that fails: the stored class name, `: ` and the message.
template<class Exception, class Operation>
std::string failure(Operation operation) {
    try {
        operation();
    } catch (const Exception& thrown) {
        EXPECT_EQ(typeid(Exception), typeid(thrown));
        return standard(thrown.getMessage());
    }
    return "nothing";
}

TEST(OCSystemAccount, ClassesHaveTheirLayout) {
    EXPECT_EQ(8u, sizeof(OCSystemAbstractAccount));
    EXPECT_EQ(8u + sizeof(struct passwd) + sizeof(OCMemoryBuffer), sizeof(OCSystemUserAccount));
    EXPECT_EQ(8u + sizeof(struct group) + sizeof(OCMemoryBuffer), sizeof(OCSystemGroupAccount));
    EXPECT_EQ(592u, sizeof(OCSystemUserAccount));
    EXPECT_EQ(576u, sizeof(OCSystemGroupAccount));
    EXPECT_EQ(2u, slots::slotOf(&OCSystemAbstractAccount::getName));
    EXPECT_EQ(3u, slots::slotCount<OCSystemAbstractAccount>());
    EXPECT_EQ(2u, slots::slotOf(&OCSystemUserAccount::getName));
    EXPECT_EQ(3u, slots::slotCount<OCSystemUserAccount>());
    EXPECT_EQ(2u, slots::slotOf(&OCSystemGroupAccount::getName));
    EXPECT_EQ(3u, slots::slotCount<OCSystemGroupAccount>());
    EXPECT_TRUE(std::is_abstract_v<OCSystemAbstractAccount>);
    EXPECT_TRUE((std::is_base_of_v<OCObject, OCSystemAbstractAccount>));
    EXPECT_TRUE((std::is_base_of_v<OCSystemAbstractAccount, OCSystemUserAccount>));
    EXPECT_TRUE((std::is_base_of_v<OCSystemAbstractAccount, OCSystemGroupAccount>));
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCSystemUserAccount>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCSystemGroupAccount>);
}

TYPED_TEST(OCSystemAccountTest, CannotBeCopied) {
    EXPECT_FALSE(std::is_copy_constructible_v<typename TypeParam::Account>);
    EXPECT_FALSE(std::is_copy_assignable_v<typename TypeParam::Account>);
}

TYPED_TEST(OCSystemAccountTest, FindsTheFirstAccountByIdentifier) {
    const typename TypeParam::Account account(0);
    EXPECT_EQ(TypeParam::firstName(), standard(account.getName()));
    EXPECT_EQ(0u, account.getIdentifier());
    const OCSystemAbstractAccount& abstract = account;
    EXPECT_EQ(TypeParam::firstName(), standard(abstract.getName()));
}

TYPED_TEST(OCSystemAccountTest, FindsEveryAccountOfTheDatabase) {
    const std::map<std::string, unsigned int> all = TypeParam::everyAccount();
    ASSERT_FALSE(all.empty());
    for (const auto& each : all) {
        const typename TypeParam::Account byName(OCAnsiString(each.first.c_str()));
        EXPECT_EQ(each.first, standard(byName.getName()));
        EXPECT_EQ(each.second, byName.getIdentifier());
        const typename TypeParam::Account byIdentifier(each.second);
        EXPECT_EQ(TypeParam::nameOf(each.second), standard(byIdentifier.getName()));
        EXPECT_EQ(each.second, byIdentifier.getIdentifier());
    }
}

TYPED_TEST(OCSystemAccountTest, AnUnknownAccountIsReportedWithoutDetails) {
    EXPECT_EQ(TypeParam::findMessage, failure<typename TypeParam::FindError>([] {
                  typename TypeParam::Account account(OCAnsiString{unknownName});
              }));
    EXPECT_EQ(TypeParam::findMessage, failure<typename TypeParam::FindError>([] {
                  typename TypeParam::Account account(unknownIdentifier);
              }));
    EXPECT_EQ(TypeParam::findMessage, failure<typename TypeParam::FindError>([] {
                  typename TypeParam::Account account(OCAnsiString{});
              }));
}

TYPED_TEST(OCSystemAccountTest, ASecondLookUpReplacesTheFirst) {
    const std::map<std::string, unsigned int> all = TypeParam::everyAccount();
    ASSERT_LT(1u, all.size());
    const auto first = all.begin();
    const auto last = all.rbegin();
    typename TypeParam::Account account(OCAnsiString(first->first.c_str()));
    account.findByName(last->first.c_str());
    EXPECT_EQ(last->first, standard(account.getName()));
    EXPECT_EQ(last->second, account.getIdentifier());
    account.findByIdentifier(first->second);
    EXPECT_EQ(TypeParam::nameOf(first->second), standard(account.getName()));
    EXPECT_EQ(first->second, account.getIdentifier());
    account.findByName(account.getName());
    EXPECT_EQ(TypeParam::nameOf(first->second), standard(account.getName()));
}

TYPED_TEST(OCSystemAccountTest, AFailedSecondLookUpLeavesNoAccount) {
    const auto last = *TypeParam::everyAccount().rbegin();
    typename TypeParam::Account account(OCAnsiString(last.first.c_str()));
    EXPECT_THROW(account.findByName(unknownName), typename TypeParam::FindError);
    EXPECT_EQ("", standard(account.getName()));
    EXPECT_EQ(0u, account.getIdentifier());
    account.findByName(last.first.c_str());
    EXPECT_THROW(account.findByIdentifier(unknownIdentifier), typename TypeParam::FindError);
    EXPECT_EQ("", standard(account.getName()));
    EXPECT_EQ(0u, account.getIdentifier());
    account.findByName(last.first.c_str());
    EXPECT_EQ(last.first, standard(account.getName()));
}

TYPED_TEST(OCSystemAccountTest, HandsItsRecordAndABufferOfTheSystemsSizeOver) {
    typedef typename TypeParam::Account Account;
    const long size = sysconf(TypeParam::sizeName);
    ASSERT_LT(0, size);
    std::unique_ptr<Account> account(new Account(0));
    unsigned long asked = 0;
    char* bufferOfName = nullptr;
    const auto check = [&](typename TypeParam::Record* record, char* buffer, std::size_t given,
                           typename TypeParam::Record** found) {
        ++asked;
        EXPECT_EQ(reinterpret_cast<char*>(account.get()) + 8, reinterpret_cast<char*>(record));
        EXPECT_EQ(static_cast<std::size_t>(size), given);
        EXPECT_EQ(nullptr, *found);
        // What a look-up before has found is gone.
        EXPECT_TRUE(TypeParam::isEmpty(*record));
        std::memcpy(buffer, "answer", 7);
        TypeParam::fill(record, buffer, 4321);
        *found = record;
        return 0;
    };
    {
        Replacement asking(TypeParam::byName(), [&](const char* name, auto* record, char* buffer,
                                                    std::size_t given, auto** found) {
            EXPECT_STREQ("some name", name);
            bufferOfName = buffer;
            return check(record, buffer, given, found);
        });
        account->findByName("some name");
    }
    EXPECT_EQ("answer", standard(account->getName()));
    EXPECT_EQ(4321u, account->getIdentifier());
    {
        Replacement asking(TypeParam::byIdentifier(),
                           [&](unsigned int identifier, auto* record, char* buffer,
                               std::size_t given, auto** found) {
                               EXPECT_EQ(77u, identifier);
                               EXPECT_EQ(bufferOfName, buffer);
                               return check(record, buffer, given, found);
                           });
        account->findByIdentifier(77);
    }
    EXPECT_EQ(2u, asked);
    EXPECT_EQ("answer", standard(account->getName()));
}

TYPED_TEST(OCSystemAccountTest, AFailingLookUpIsReportedWithTheTextForErrno) {
    typename TypeParam::Account account(0);
    const std::string expected =
        std::string(TypeParam::findMessage) + " (Numerical result out of range)";
    {
        // The result only tells that it failed.
        Replacement asking(TypeParam::byName(),
                           [](const char*, auto* record, char* buffer, std::size_t, auto** found) {
                               std::memcpy(buffer, "part", 5);
                               TypeParam::fill(record, buffer, 1);
                               *found = record;
                               errno = ERANGE;
                               return EIO;
                           });
        EXPECT_EQ(expected,
                  failure<typename TypeParam::FindError>([&] { account.findByName("some name"); }));
    }
    EXPECT_EQ("", standard(account.getName()));
    EXPECT_EQ(0u, account.getIdentifier());
    {
        Replacement asking(TypeParam::byIdentifier(),
                           [](unsigned int, auto*, char*, std::size_t, auto**) {
                               errno = ERANGE;
                               return -1;
                           });
        EXPECT_EQ(expected,
                  failure<typename TypeParam::FindError>([&] { account.findByIdentifier(0); }));
    }
}

TYPED_TEST(OCSystemAccountTest, EveryFailureIsReportedAtOnce) {
    typename TypeParam::Account account(0);
    for (const int code : {EINTR, ENOENT, ESRCH, EBADF, EPERM, EAGAIN, ENOMEM, ERANGE}) {
        const std::string expected =
            std::string(TypeParam::findMessage) + " (" + strerror(code) + ")";
        unsigned long asked = 0;
        const auto fail = [&] {
            if (++asked > 2)
                return 0; // found nothing
            errno = code;
            return code;
        };
        Replacement byName(TypeParam::byName(),
                           [&](const char*, auto*, char*, std::size_t, auto**) { return fail(); });
        EXPECT_EQ(expected,
                  failure<typename TypeParam::FindError>([&] { account.findByName("some name"); }));
        Replacement byIdentifier(
            TypeParam::byIdentifier(),
            [&](unsigned int, auto*, char*, std::size_t, auto**) { return fail(); });
        EXPECT_EQ(expected,
                  failure<typename TypeParam::FindError>([&] { account.findByIdentifier(0); }));
        EXPECT_EQ(2u, asked);
    }
}

TYPED_TEST(OCSystemAccountTest, AFoundAccountNeedsAResultOfZero) {
    typename TypeParam::Account account(0);
    Replacement asking(TypeParam::byName(),
                       [](const char*, auto* record, char* buffer, std::size_t, auto**) {
                           std::memcpy(buffer, "other", 6);
                           TypeParam::fill(record, buffer, 1);
                           return 0; // and finds nothing, though the record was used
                       });
    EXPECT_EQ(TypeParam::findMessage,
              failure<typename TypeParam::FindError>([&] { account.findByName("some name"); }));
    EXPECT_EQ("", standard(account.getName()));
}

TYPED_TEST(OCSystemAccountTest, TheBufferDoesNotGrowForALargeAccount) {
    Replacement limited(calls::sysconf, [](int name) -> long {
        return name == TypeParam::sizeName ? 4 : calls::sysconf.original(name);
    });
    const std::string expected =
        std::string(TypeParam::findMessage) + " (Numerical result out of range)";
    EXPECT_EQ(expected, failure<typename TypeParam::FindError>(
                            [] { typename TypeParam::Account account(0); }));
    EXPECT_EQ(expected, failure<typename TypeParam::FindError>([] {
                  typename TypeParam::Account account(OCAnsiString(TypeParam::firstName().c_str()));
              }));
}

TYPED_TEST(OCSystemAccountTest, TheSizeIsAskedForOnce) {
    unsigned long asked = 0;
    std::size_t given = 0;
    Replacement limited(calls::sysconf, [&](int name) -> long {
        if (name != TypeParam::sizeName)
            return calls::sysconf.original(name);
        ++asked;
        return 5000;
    });
    Replacement asking(
        TypeParam::byIdentifier(),
        [&](unsigned int identifier, auto* record, char* buffer, std::size_t size, auto** found) {
            given = size;
            return TypeParam::byIdentifier().original(identifier, record, buffer, size, found);
        });
    typename TypeParam::Account account(0);
    EXPECT_EQ(5000u, given);
    account.findByIdentifier(0);
    account.findByName(account.getName());
    EXPECT_EQ(1u, asked);
}

TYPED_TEST(OCSystemAccountTest, TheSizeCanBeAskedForAgain) {
    typename TypeParam::Account account(0);
    std::size_t given = 0;
    Replacement asking(
        TypeParam::byIdentifier(),
        [&](unsigned int identifier, auto* record, char* buffer, std::size_t size, auto** found) {
            given = size;
            return TypeParam::byIdentifier().original(identifier, record, buffer, size, found);
        });
    {
        Replacement larger(calls::sysconf, [](int name) -> long {
            return name == TypeParam::sizeName ? 9000 : calls::sysconf.original(name);
        });
        account.initialize();
        EXPECT_EQ("", standard(account.getName()));
        account.findByIdentifier(0);
        EXPECT_EQ(9000u, given);
    }
    {
        Replacement smaller(calls::sysconf, [](int name) -> long {
            return name == TypeParam::sizeName ? 600 : calls::sysconf.original(name);
        });
        account.initializeBuffer();
    }
    account.findByIdentifier(0);
    EXPECT_EQ(600u, given);
    EXPECT_EQ(TypeParam::firstName(), standard(account.getName()));
}

TYPED_TEST(OCSystemAccountTest, WithoutASizeThereIsNoLookUp) {
    Counting byName(TypeParam::byName());
    Counting byIdentifier(TypeParam::byIdentifier());
    const struct {
        long size;
        int code; // 0 leaves errno as it is
        const char* text;
    } cases[] = {{0, 0, "Success"},
                 {-1, 0, "Success"},
                 {-1, EINVAL, "Invalid argument"},
                 {-5, ENOMEM, "Cannot allocate memory"},
                 {0, EIO, "Input/output error"}};
    for (const auto& each : cases) {
        Replacement limited(calls::sysconf, [&](int name) -> long {
            if (name != TypeParam::sizeName)
                return calls::sysconf.original(name);
            if (each.code != 0)
                errno = each.code;
            return each.size;
        });
        const std::string expected = std::string(TypeParam::bufferMessage) + " (" + each.text + ")";
        errno = EBADF; // of something before
        EXPECT_EQ(expected, failure<typename TypeParam::BufferError>(
                                [] { typename TypeParam::Account account(0); }));
        errno = EBADF;
        EXPECT_EQ(expected, failure<typename TypeParam::BufferError>(
                                [] { typename TypeParam::Account account(OCAnsiString{"root"}); }));
    }
    EXPECT_EQ(0u, byName.calls());
    EXPECT_EQ(0u, byIdentifier.calls());
}

TYPED_TEST(OCSystemAccountTest, AnAccountKeepsItsOwnTexts) {
    const std::map<std::string, unsigned int> all = TypeParam::everyAccount();
    const typename TypeParam::Account first(OCAnsiString(all.begin()->first.c_str()));
    const typename TypeParam::Account last(OCAnsiString(all.rbegin()->first.c_str()));
    EXPECT_EQ(all.begin()->first, standard(first.getName()));
    EXPECT_EQ(all.rbegin()->first, standard(last.getName()));
}

TYPED_TEST(OCSystemAccountTest, ExhaustedMemoryLeavesNothingBehind) {
    const std::string longName(200, 'n');
    typename TypeParam::Account large(0);
    {
        Replacement limited(calls::sysconf, [](int name) -> long {
            return name == TypeParam::sizeName ? 5000 : calls::sysconf.original(name);
        });
        Replacement asking(TypeParam::byIdentifier(), [&](unsigned int, auto* record, char* buffer,
                                                          std::size_t, auto** found) {
            std::memcpy(buffer, longName.c_str(), longName.size() + 1);
            TypeParam::fill(record, buffer, 1);
            *found = record;
            return 0;
        });
        const long before = fault::heapRecord().liveBlocks;
        EXPECT_EQ(1u, fault::failEachRequest([] { typename TypeParam::Account account(0); }));
        EXPECT_EQ(before, fault::heapRecord().liveBlocks);
        large.findByIdentifier(0);
    }
    const long before = fault::heapRecord().liveBlocks;
    EXPECT_EQ(1u, fault::failEachRequest([&] { large.getName(); }));
    EXPECT_EQ(before, fault::heapRecord().liveBlocks);
}

} // namespace
