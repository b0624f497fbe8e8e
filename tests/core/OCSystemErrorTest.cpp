#include "OCSystemError.h"
#include "support/AllocationSweep.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <string>

#include <dlfcn.h>

namespace {

enum class Answer { System, Null, Long };

Answer answer = Answer::System;
unsigned int askedCode = 0;
std::size_t askedSize = 0;

using Function = char* (*)(int, char*, std::size_t);

class SystemAnswers {
public:
    explicit SystemAnswers(Answer wanted) { answer = wanted; }
    ~SystemAnswers() { answer = Answer::System; }
};

} // namespace

extern "C" char* strerror_r(int code, char* buffer, std::size_t size) noexcept {
    static const auto next = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "strerror_r"));
    askedCode = static_cast<unsigned int>(code);
    askedSize = size;
    if (answer == Answer::System)
        return next(code, buffer, size);
    errno = ERANGE;
    if (answer == Answer::Null)
        return nullptr;
    std::memset(buffer, 'x', size - 1);
    buffer[size - 1] = 0;
    return buffer;
}

namespace {

TEST(OCSystemError, GivesTheTextOfTheSystem) {
    EXPECT_EQ(OCAnsiString("No such file or directory"), systemErrorText(ENOENT));
    EXPECT_EQ(OCAnsiString("Permission denied"), systemErrorText(EACCES));
    EXPECT_EQ(OCAnsiString("Success"), systemErrorText(0));
    EXPECT_EQ(0u, askedCode);
    EXPECT_EQ(1024u, askedSize);
}

TEST(OCSystemError, AnUnknownNumberHasATextToo) {
    EXPECT_EQ(OCAnsiString("Unknown error 99999"), systemErrorText(99999));
    EXPECT_EQ(OCAnsiString("Unknown error -1"), systemErrorText(4294967295U));
}

TEST(OCSystemError, WithoutANumberItTellsErrno) {
    errno = EEXIST;
    EXPECT_EQ(OCAnsiString("File exists"), systemErrorText());
    errno = ENOENT;
    EXPECT_EQ(OCAnsiString("No such file or directory"), systemErrorText());
}

TEST(OCSystemError, IsEmptyWhenTheSystemGivesNoText) {
    const SystemAnswers null(Answer::Null);
    EXPECT_EQ(OCAnsiString(""), systemErrorText(ENOENT));
}

TEST(OCSystemError, TakesALongText) {
    const SystemAnswers text(Answer::Long);
    EXPECT_EQ(OCAnsiString(std::string(1023, 'x').c_str()), systemErrorText(ENOENT));
}

TEST(OCSystemError, ALongTextNeedsMemory) {
    const SystemAnswers text(Answer::Long);
    sweep::results()("systemErrorText", [](auto&) { systemErrorText(ENOENT); });
    sweep::results()("systemErrorText of errno", [](auto&) { systemErrorText(); });
}

TEST(OCSystemError, LeavesErrnoAlone) {
    const SystemAnswers null(Answer::Null);
    errno = EEXIST;
    systemErrorText(ENOENT);
    EXPECT_EQ(EEXIST, errno);
    systemErrorText();
    EXPECT_EQ(EEXIST, errno);
}

} // namespace
