#ifndef ORVABASE_TESTS_ACCOUNTCALLS_H
#define ORVABASE_TESTS_ACCOUNTCALLS_H

#include "support/SystemCalls.h"

#include <grp.h>
#include <pwd.h>

/// The replaceable functions on the account database.
namespace calls {
inline SystemCall<int(const char*, struct passwd*, char*, size_t, struct passwd**)> getpwnam_r{
    "getpwnam_r"};
inline SystemCall<int(uid_t, struct passwd*, char*, size_t, struct passwd**)> getpwuid_r{
    "getpwuid_r"};
inline SystemCall<int(const char*, struct group*, char*, size_t, struct group**)> getgrnam_r{
    "getgrnam_r"};
inline SystemCall<int(gid_t, struct group*, char*, size_t, struct group**)> getgrgid_r{
    "getgrgid_r"};
} // namespace calls

ORVABASE_TEST_REPLACES int getpwnam_r(const char* name, struct passwd* record, char* buffer,
                                      size_t size, struct passwd** found) {
    return calls::getpwnam_r(name, record, buffer, size, found);
}
ORVABASE_TEST_REPLACES int getpwuid_r(uid_t identifier, struct passwd* record, char* buffer,
                                      size_t size, struct passwd** found) {
    return calls::getpwuid_r(identifier, record, buffer, size, found);
}
ORVABASE_TEST_REPLACES int getgrnam_r(const char* name, struct group* record, char* buffer,
                                      size_t size, struct group** found) {
    return calls::getgrnam_r(name, record, buffer, size, found);
}
ORVABASE_TEST_REPLACES int getgrgid_r(gid_t identifier, struct group* record, char* buffer,
                                      size_t size, struct group** found) {
    return calls::getgrgid_r(identifier, record, buffer, size, found);
}

#endif
