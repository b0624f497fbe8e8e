#include "OCStringFilter.h"
#include "OCMemory.h"
#include "OCMemoryStream.h"
#include "support/Exceptions.h"
#include "support/FaultInjection.h"
#include "support/Growth.h"
#include "support/RecordingStream.h"
#include "support/Slots.h"

#include <gtest/gtest.h>

#include <climits>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <type_traits>
#include <vector>

namespace {

constexpr const char* decodeMessage = "Error while decoding the string";
constexpr unsigned int ended = 0xffffffff;

static_assert(sizeof(OCAbstractStringFilter) == 16, "the mode");
static_assert(sizeof(OCOctetStringFilter) == 16, "nothing more");
static_assert(sizeof(OCT61StringFilter) == 16, "nothing more");
static_assert(sizeof(OCUtf8StringFilter) == 16, "nothing more");
static_assert(sizeof(OCIa5StringFilter) == 16, "nothing more");
static_assert(sizeof(OCNumericStringFilter) == 16, "nothing more");
static_assert(sizeof(OCPrintableStringFilter) == 16, "nothing more");
static_assert(sizeof(OCVisibleStringFilter) == 16, "nothing more");

std::string text(const OCAnsiString& string) {
    return std::string(string.getString(), string.getLength());
}

std::wstring text(const OCWideString& string) {
    return std::wstring(string.getString(), string.getLength());
}

OCAnsiString string(const std::string& text) {
    return OCAnsiString(text.data(), text.size());
}

OCWideString string(const std::wstring& text) {
    return OCWideString(text.data(), text.size());
}

OEStringFilterMode mode(int value) {
    return static_cast<OEStringFilterMode>(value);
}

/// Every mode, and values that are none.
constexpr int modes[] = {0, 1, 2, 3, 7, -1, INT_MAX, INT_MIN};

template<class Filter>
std::string read(const std::string& input, int value = 0) {
    RecordingStream stream(input);
    return text(Filter(mode(value)).readAnsi(stream));
}

template<class Filter>
std::wstring readWide(const std::string& input, int value = 0) {
    RecordingStream stream(input);
    return text(Filter(mode(value)).readWide(stream));
}

template<class Filter>
std::string write(const std::string& input, int value = 0) {
    RecordingStream stream;
    Filter(mode(value)).writeAnsi(stream, string(input));
    return stream.data;
}

template<class Filter>
std::string writeWide(const std::wstring& input, int value = 0) {
    RecordingStream stream;
    Filter(mode(value)).writeWide(stream, string(input));
    return stream.data;
}

/// Behaves as `Filter` does but is not the library's own, so that its operations are called for
/// each character, which it counts.
template<class Filter>
class Derived : public Filter {
public:
    using Filter::Filter;
    ~Derived() override = default;

    unsigned int readCodeAnsi(OCStreamReader& reader, char* c) const override {
        ++calls;
        return Filter::readCodeAnsi(reader, c);
    }
    unsigned int readCodeWide(OCStreamReader& reader, wchar_t* c) const override {
        ++calls;
        return Filter::readCodeWide(reader, c);
    }
    void writeCodeAnsi(OCStreamWriter& writer, char c) const override {
        ++calls;
        Filter::writeCodeAnsi(writer, c);
    }
    void writeCodeWide(OCStreamWriter& writer, wchar_t c) const override {
        ++calls;
        Filter::writeCodeWide(writer, c);
    }

    mutable unsigned long calls = 0;
};

template<class Filter>
class OCStringFilterOfEachKind : public testing::Test {};

typedef testing::Types<OCOctetStringFilter, OCT61StringFilter, OCUtf8StringFilter,
                       OCIa5StringFilter, OCNumericStringFilter, OCPrintableStringFilter,
                       OCVisibleStringFilter>
    AllFilters;
TYPED_TEST_SUITE(OCStringFilterOfEachKind, AllFilters, ); // clang asks for the comma

TEST(OCStringFilter, OperationsHaveTheirSlots) {
    EXPECT_EQ(2u, slots::slotOf(&OCAbstractStringFilter::readCodeAnsi));
    EXPECT_EQ(3u, slots::slotOf(&OCAbstractStringFilter::readCodeWide));
    EXPECT_EQ(4u, slots::slotOf(&OCAbstractStringFilter::writeCodeAnsi));
    EXPECT_EQ(5u, slots::slotOf(&OCAbstractStringFilter::writeCodeWide));
    EXPECT_EQ(6u, slots::slotCount<OCAbstractStringFilter>());
    EXPECT_EQ(6u, slots::slotCount<OCOctetStringFilter>());
    EXPECT_EQ(6u, slots::slotCount<OCT61StringFilter>());
    EXPECT_EQ(6u, slots::slotCount<OCUtf8StringFilter>());
    EXPECT_EQ(6u, slots::slotOf(&OCIa5StringFilter::maskByte));
    EXPECT_EQ(7u, slots::slotOf(&OCIa5StringFilter::validateByte));
    EXPECT_EQ(8u, slots::slotCount<OCIa5StringFilter>());
    EXPECT_EQ(8u, slots::slotCount<OCNumericStringFilter>());
    EXPECT_EQ(8u, slots::slotCount<OCPrintableStringFilter>());
    EXPECT_EQ(8u, slots::slotCount<OCVisibleStringFilter>());
}

TEST(OCStringFilter, ClassesFormATree) {
    EXPECT_TRUE((std::is_base_of_v<OCObject, OCAbstractStringFilter>));
    EXPECT_TRUE(std::is_abstract_v<OCAbstractStringFilter>);
    EXPECT_TRUE((std::is_base_of_v<OCAbstractStringFilter, OCOctetStringFilter>));
    EXPECT_TRUE((std::is_base_of_v<OCOctetStringFilter, OCT61StringFilter>));
    EXPECT_TRUE((std::is_base_of_v<OCAbstractStringFilter, OCUtf8StringFilter>));
    EXPECT_FALSE((std::is_base_of_v<OCOctetStringFilter, OCUtf8StringFilter>));
    EXPECT_FALSE((std::is_base_of_v<OCOctetStringFilter, OCIa5StringFilter>));
    EXPECT_TRUE((std::is_base_of_v<OCAbstractStringFilter, OCIa5StringFilter>));
    EXPECT_TRUE((std::is_base_of_v<OCIa5StringFilter, OCNumericStringFilter>));
    EXPECT_TRUE((std::is_base_of_v<OCIa5StringFilter, OCPrintableStringFilter>));
    EXPECT_TRUE((std::is_base_of_v<OCIa5StringFilter, OCVisibleStringFilter>));
    EXPECT_EQ(4u, sizeof(OEStringFilterMode));
    EXPECT_EQ(0, StringFilterModeReplace);
    EXPECT_EQ(1, StringFilterModeSkip);
    EXPECT_EQ(2, StringFilterModeRefuse);
}

TYPED_TEST(OCStringFilterOfEachKind, KeepsItsMode) {
    for (const int value : modes)
        EXPECT_EQ(value, TypeParam(mode(value)).getMode());
}

TYPED_TEST(OCStringFilterOfEachKind, AnEmptyStreamReadsAsAnEmptyString) {
    for (const int value : modes) {
        EXPECT_EQ("", read<TypeParam>("", value));
        EXPECT_EQ(L"", readWide<TypeParam>("", value));
    }
}

TYPED_TEST(OCStringFilterOfEachKind, AnEmptyTextWritesNothing) {
    RecordingStream stream;
    TypeParam(StringFilterModeReplace).writeAnsi(stream, OCAnsiString());
    TypeParam(StringFilterModeReplace).writeWide(stream, OCWideString());
    EXPECT_EQ(0u, stream.takeCalls().size());
}

TEST(OCStringFilter, TestsTellTheRepertoires) {
    const std::string digits = "0123456789 ";
    const std::string printable =
        digits + "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ'()+,-./:=?";
    for (int i = 0; i < 256; ++i) {
        SCOPED_TRACE(i);
        const unsigned char byte = static_cast<unsigned char>(i);
        const char c = static_cast<char>(i);
        EXPECT_EQ(i <= 127, OCIa5StringFilter::testByte(byte));
        EXPECT_EQ(digits.find(c) != std::string::npos, OCNumericStringFilter::testByte(byte));
        EXPECT_EQ(printable.find(c) != std::string::npos, OCPrintableStringFilter::testByte(byte));
        EXPECT_EQ(i >= 32 && i <= 126, OCVisibleStringFilter::testByte(byte));

        const OCIa5StringFilter ia5(StringFilterModeReplace);
        const OCNumericStringFilter numeric(StringFilterModeReplace);
        const OCPrintableStringFilter printing(StringFilterModeReplace);
        const OCVisibleStringFilter visible(StringFilterModeReplace);
        EXPECT_EQ(OCIa5StringFilter::testByte(byte), ia5.validateByte(byte));
        EXPECT_EQ(OCNumericStringFilter::testByte(byte), numeric.validateByte(byte));
        EXPECT_EQ(OCPrintableStringFilter::testByte(byte), printing.validateByte(byte));
        EXPECT_EQ(OCVisibleStringFilter::testByte(byte), visible.validateByte(byte));
    }
}

TEST(OCStringFilter, MasksAreThoseOfTheClass) {
    EXPECT_EQ('.', OCIa5StringFilter(StringFilterModeReplace).maskByte());
    EXPECT_EQ(' ', OCNumericStringFilter(StringFilterModeReplace).maskByte());
    EXPECT_EQ('.', OCPrintableStringFilter(StringFilterModeReplace).maskByte());
    EXPECT_EQ('.', OCVisibleStringFilter(StringFilterModeReplace).maskByte());
}

TEST(OCStringFilter, NumericTextsAreReadByMode) {
    EXPECT_EQ("12  3", read<OCNumericStringFilter>("12a 3", 0));
    EXPECT_EQ("12 3", read<OCNumericStringFilter>("12a 3", 1));
    EXPECT_EQ("12", read<OCNumericStringFilter>("12a 3", 3));
    EXPECT_EQ(L"12  3", readWide<OCNumericStringFilter>("12a 3", 0));
    EXPECT_EQ(L"12 3", readWide<OCNumericStringFilter>("12a 3", 1));
    EXPECT_EQ(L"12", readWide<OCNumericStringFilter>("12a 3", -1));
}

TEST(OCStringFilter, RefusalComesBehindTheCharacterRefused) {
    const OCNumericStringFilter filter(StringFilterModeRefuse);
    RecordingStream stream("12a 3");
    EXPECT_EXCEPTION(filter.readAnsi(stream), OXStringFilter_DecodeError, decodeMessage);
    EXPECT_EQ((std::vector<std::string>{"read 4096 -> 5", "seek -2 current -> 3"}),
              stream.takeCalls());
    stream.position = 0;
    EXPECT_EXCEPTION(filter.readWide(stream), OXStringFilter_DecodeError, decodeMessage);
    EXPECT_EQ((std::vector<std::string>{"read 4096 -> 5", "seek -2 current -> 3"}),
              stream.takeCalls());
    EXPECT_EQ(" 3", text(filter.readAnsi(stream)));
    try {
        stream.position = 0;
        filter.readAnsi(stream);
        FAIL();
    } catch (const OXStringFilter_DecodeError& failure) {
        EXPECT_EQ(0u, failure.getDetails().getCount());
    }
}

TEST(OCStringFilter, AnUnknownModeEndsBehindTheInvalidCharacter) {
    const OCIa5StringFilter filter(mode(7));
    RecordingStream stream("ab\xC3"
                           "cd");
    EXPECT_EQ("ab", text(filter.readAnsi(stream)));
    EXPECT_EQ(3u, stream.position);
    EXPECT_EQ("cd", text(filter.readAnsi(stream)));
    EXPECT_EQ(5u, stream.position);
}

TEST(OCStringFilter, PrintableTextsAreRead) {
    EXPECT_EQ("a.b", read<OCPrintableStringFilter>("a*b"));
    EXPECT_EQ("'()+,-./:=?", read<OCPrintableStringFilter>("'()+,-./:=?", 2));
    EXPECT_EQ("azAZ09 ", read<OCPrintableStringFilter>("a*z@A[Z`0{9\n \x7f", 1));
}

TEST(OCStringFilter, VisibleTextsAreRead) {
    EXPECT_EQ("a~ .", read<OCVisibleStringFilter>("a~ \x7f"));
    EXPECT_EQ("..", read<OCVisibleStringFilter>("\x1f\x80"));
}

TEST(OCStringFilter, Utf8SequencesReadAsOnePeriod) {
    for (const int value : modes) {
        EXPECT_EQ(".", read<OCUtf8StringFilter>("\xC3\xA9", value));
        EXPECT_EQ("a.b..c", read<OCUtf8StringFilter>("a\xE2\x82\xAC"
                                                     "b\xF0\x9F\x98\x80\xFF"
                                                     "c",
                                                     value));
        EXPECT_EQ(L"a.b", readWide<OCUtf8StringFilter>("a\xC3\xA9"
                                                       "b",
                                                       value));
        EXPECT_EQ("", read<OCUtf8StringFilter>("\x80\xBF", value));
        EXPECT_EQ(std::string("\0\x7f..", 4),
                  read<OCUtf8StringFilter>(std::string("\0\x7f\xC0\xFF", 4), value));
    }
}

TEST(OCStringFilter, Utf8WritesPeriodsBehindWideCharacters) {
    EXPECT_EQ("a.b.", writeWide<OCUtf8StringFilter>(L"ab"));
    EXPECT_EQ("a...b.", writeWide<OCUtf8StringFilter>({L'a', 128, -1, L'b'}));
    EXPECT_EQ("\x7f.", writeWide<OCUtf8StringFilter>({127}));
    EXPECT_EQ(std::string("\0.", 2), writeWide<OCUtf8StringFilter>({0}));
    EXPECT_EQ(".", writeWide<OCUtf8StringFilter>({WCHAR_MIN}));
    EXPECT_EQ("a..\x7f", write<OCUtf8StringFilter>("a\x80\xFF\x7f"));
}

TEST(OCStringFilter, OctetsPass) {
    std::string all;
    for (int i = 0; i < 256; ++i)
        all += static_cast<char>(i);
    for (const int value : modes) {
        EXPECT_EQ(all, read<OCOctetStringFilter>(all, value));
        EXPECT_EQ(all, read<OCT61StringFilter>(all, value));
        EXPECT_EQ(all, write<OCOctetStringFilter>(all, value));
        EXPECT_EQ(all, write<OCT61StringFilter>(all, value));
    }
    EXPECT_EQ((std::wstring{-23, L'a'}), readWide<OCOctetStringFilter>("\xE9"
                                                                       "a"));
    EXPECT_EQ((std::wstring{-1}), readWide<OCT61StringFilter>("\xFF"));
    EXPECT_EQ(".\xFF.", writeWide<OCOctetStringFilter>({0x100, 0xFF, -1}));
    EXPECT_EQ(std::string("\0.", 2), writeWide<OCT61StringFilter>({0, WCHAR_MAX}));
}

TEST(OCStringFilter, WritingReplacesInEveryMode) {
    for (const int value : modes) {
        EXPECT_EQ("12  3", write<OCNumericStringFilter>("12a 3", value));
        EXPECT_EQ("a..", write<OCIa5StringFilter>("a\x80\xFF", value));
        EXPECT_EQ("a.b", write<OCPrintableStringFilter>("a*b", value));
        EXPECT_EQ("a..", write<OCVisibleStringFilter>("a\x7f\x1f", value));
        EXPECT_EQ("1   3", writeWide<OCNumericStringFilter>({L'1', L'a', 0x131, -1, L'3'}, value));
        EXPECT_EQ("a.\x7f", writeWide<OCIa5StringFilter>({L'a', 0x80, 0x7f}, value));
        EXPECT_EQ("a...", writeWide<OCVisibleStringFilter>({L'a', 0x161, -23, WCHAR_MIN}, value));
    }
}

TEST(OCStringFilter, OnlyWhatIsReadChangesTheArgument) {
    RecordingStream stream("1a");
    char c = '?';
    wchar_t wide = L'?';
    {
        OCStreamReader reader(stream);
        const OCNumericStringFilter skipping(StringFilterModeSkip);
        EXPECT_EQ(1u, skipping.readCodeAnsi(reader, &c));
        EXPECT_EQ('1', c);
        EXPECT_EQ(0u, skipping.readCodeAnsi(reader, &c));
        EXPECT_EQ('1', c);
        EXPECT_EQ(ended, skipping.readCodeAnsi(reader, &c));
        EXPECT_EQ('1', c);
    }
    const auto readOne = [&](const std::string& input, const OCAbstractStringFilter& filter) {
        RecordingStream source(input);
        OCStreamReader reader(source);
        c = '?';
        wide = L'?';
        unsigned int narrowResult = 99;
        try {
            narrowResult = filter.readCodeAnsi(reader, &c);
        } catch (const OXStringFilter_DecodeError&) {
        }
        source.position = 0;
        OCStreamReader second(source);
        unsigned int wideResult = 99;
        try {
            wideResult = filter.readCodeWide(second, &wide);
        } catch (const OXStringFilter_DecodeError&) {
        }
        EXPECT_EQ(narrowResult, wideResult);
        if (narrowResult != 1) {
            EXPECT_EQ('?', c);
            EXPECT_EQ(L'?', wide);
        } else {
            EXPECT_EQ(static_cast<wchar_t>(c), wide);
        }
        return narrowResult;
    };
    EXPECT_EQ(1u, readOne("a", OCNumericStringFilter(mode(0))));
    EXPECT_EQ(L' ', wide);
    EXPECT_EQ(0u, readOne("a", OCNumericStringFilter(mode(1))));
    EXPECT_EQ(99u, readOne("a", OCNumericStringFilter(mode(2))));
    EXPECT_EQ(ended, readOne("a", OCNumericStringFilter(mode(3))));
    EXPECT_EQ(ended, readOne("", OCNumericStringFilter(mode(0))));
    EXPECT_EQ(1u, readOne("\xE9", OCOctetStringFilter(mode(0))));
    EXPECT_EQ(-23, wide);
    EXPECT_EQ(ended, readOne("", OCOctetStringFilter(mode(0))));
    EXPECT_EQ(0u, readOne("\x80", OCUtf8StringFilter(mode(2))));
    EXPECT_EQ(1u, readOne("\xC3", OCUtf8StringFilter(mode(2))));
    EXPECT_EQ('.', c);
    EXPECT_EQ(ended, readOne("", OCUtf8StringFilter(mode(2))));
}

TYPED_TEST(OCStringFilterOfEachKind, DerivedFiltersAreAskedForEachCharacter) {
    const Derived<TypeParam> filter(StringFilterModeReplace);
    RecordingStream stream("12 3");
    EXPECT_EQ("12 3", text(filter.readAnsi(stream)));
    EXPECT_EQ(5u, filter.calls);
    stream.position = 0;
    EXPECT_EQ(L"12 3", text(filter.readWide(stream)));
    EXPECT_EQ(10u, filter.calls);
    filter.writeAnsi(stream, "abc");
    EXPECT_EQ(13u, filter.calls);
    filter.writeWide(stream, OCWideString(L"abc"));
    EXPECT_EQ(16u, filter.calls);
}

/// Takes vowels for invalid, and masks them.
class NoVowels : public OCIa5StringFilter {
public:
    using OCIa5StringFilter::OCIa5StringFilter;
    ~NoVowels() override = default;

    char maskByte() const override { return '\xE9'; }
    bool validateByte(unsigned char byte) const override {
        return std::string("aeiou").find(static_cast<char>(byte)) == std::string::npos;
    }
};

TEST(OCStringFilter, ApplicationsOverrideTheTestAndTheMask) {
    EXPECT_EQ("h\xE9ll\xE9 \xFF", read<NoVowels>("hello \xFF", 0));
    EXPECT_EQ((std::wstring{L'h', -23, -1}), readWide<NoVowels>("he\xFF", 0));
    EXPECT_EQ("hll", read<NoVowels>("hello", 1));
    EXPECT_THROW(read<NoVowels>("hello", 2), OXStringFilter_DecodeError);
    EXPECT_EQ("h", read<NoVowels>("hello", 9));
    EXPECT_EQ("h\xE9ll\xE9", write<NoVowels>("hello"));
    EXPECT_EQ("h\xE9\xFF\xE9", writeWide<NoVowels>({L'h', L'e', 0xFF, 0x100}));
}

/// Throws for the letter x.
class Choking : public OCIa5StringFilter {
public:
    using OCIa5StringFilter::OCIa5StringFilter;
    ~Choking() override = default;

    bool validateByte(unsigned char byte) const override {
        if (byte == 'x')
            throw 'x';
        return OCIa5StringFilter::validateByte(byte);
    }
};

TEST(OCStringFilter, WhatAnApplicationsFilterThrowsPassesThrough) {
    const Choking filter(StringFilterModeReplace);
    RecordingStream target;
    // What came before is written.
    EXPECT_THROW(filter.writeAnsi(target, "abxc"), char);
    EXPECT_EQ("ab", target.data);
    EXPECT_THROW(filter.writeWide(target, OCWideString(L"dxe")), char);
    EXPECT_EQ("abd", target.data);
    // The character that it was thrown for is read.
    RecordingStream source("abxcx");
    EXPECT_THROW(filter.readAnsi(source), char);
    EXPECT_EQ(3u, source.position);
    EXPECT_THROW(filter.readWide(source), char);
    EXPECT_EQ(5u, source.position);
}

/// Results that mean nothing, and the arguments of its operations.
class Odd : public OCAbstractStringFilter {
public:
    Odd() : OCAbstractStringFilter(StringFilterModeReplace) {}
    ~Odd() override = default;

    template<class Character>
    unsigned int readOne(OCStreamReader& reader, Character* c) const {
        char byte;
        if (!reader.readCharacter(byte))
            return ended;
        *c = byte;
        switch (byte) {
        case '1':
            return 1;
        case '5':
            return 5;
        case '-':
            return 0xfffffffe;
        default:
            return 0;
        }
    }
    unsigned int readCodeAnsi(OCStreamReader& reader, char* c) const override {
        return readOne(reader, c);
    }
    unsigned int readCodeWide(OCStreamReader& reader, wchar_t* c) const override {
        return readOne(reader, c);
    }
    void writeCodeAnsi(OCStreamWriter& writer, char c) const override {
        narrow += c;
        writer.writeCharacter(c);
    }
    void writeCodeWide(OCStreamWriter&, wchar_t c) const override { wide += c; }

    mutable std::string narrow;
    mutable std::wstring wide;
};

TEST(OCStringFilter, OtherResultsProduceNothing) {
    const Odd filter;
    RecordingStream stream("1x5-1");
    EXPECT_EQ("11", text(filter.readAnsi(stream)));
    stream.position = 0;
    EXPECT_EQ(L"11", text(filter.readWide(stream)));
}

TEST(OCStringFilter, TextsAreWrittenInOrder) {
    const Odd filter;
    RecordingStream stream;
    filter.writeAnsi(stream, OCAnsiString("a\0\xE9", 3));
    EXPECT_EQ(std::string("a\0\xE9", 3), filter.narrow);
    EXPECT_EQ(filter.narrow, stream.data);
    filter.writeWide(stream, string(std::wstring{L'a', 0, -1, 0x10000}));
    EXPECT_EQ((std::wstring{L'a', 0, -1, 0x10000}), filter.wide);
}

TYPED_TEST(OCStringFilterOfEachKind, ReadsFromThePositionOn) {
    RecordingStream stream("xx12");
    stream.position = 2;
    EXPECT_EQ("12", text(TypeParam(StringFilterModeRefuse).readAnsi(stream)));
    EXPECT_EQ((std::vector<std::string>{"read 4096 -> 2", "read 4096 -> end"}), stream.takeCalls());
}

TYPED_TEST(OCStringFilterOfEachKind, WritesInBlocks) {
    const TypeParam filter(StringFilterModeReplace);
    for (const unsigned long size : {1UL, 4095UL, 4096UL, 4097UL, 8192UL, 8193UL, 20000UL}) {
        SCOPED_TRACE(size);
        const std::string input(size, '1');
        RecordingStream stream;
        filter.writeAnsi(stream, string(input));
        std::vector<std::string> expected(size / 4096, "write 4096 -> 4096");
        if (size % 4096 != 0) {
            const std::string rest = std::to_string(size % 4096);
            expected.push_back("write " + rest + " -> " + rest);
        }
        EXPECT_EQ(expected, stream.takeCalls());
        EXPECT_EQ(input, stream.data);
    }
}

TYPED_TEST(OCStringFilterOfEachKind, FailuresOfTheStreamReachTheCaller) {
    const TypeParam filter(StringFilterModeReplace);
    for (const unsigned long size : {1UL, 4096UL, 5000UL}) {
        RecordingStream refusing;
        refusing.writes = {{1, ULONG_MAX, RecordingStream::Outcome::Refuse}};
        EXPECT_EXCEPTION(filter.writeAnsi(refusing, string(std::string(size, '1'))),
                         OXStream_WriteError, "Writing to the stream failed");
        EXPECT_EXCEPTION(filter.writeWide(refusing, string(std::wstring(size, L'1'))),
                         OXStream_WriteError, "Writing to the stream failed");
        RecordingStream throwing;
        throwing.writes = {{1, ULONG_MAX, RecordingStream::Outcome::Throw}};
        EXPECT_THROW(filter.writeAnsi(throwing, string(std::string(size, '1'))),
                     RecordingStream::Error);
        RecordingStream source(std::string(size, '1'));
        source.reads = {{2, 2, RecordingStream::Outcome::Throw}};
        EXPECT_THROW(filter.readAnsi(source), RecordingStream::Error);
        source.readCount = 0;
        source.position = 0;
        EXPECT_THROW(filter.readWide(source), RecordingStream::Error);
    }
}

TYPED_TEST(OCStringFilterOfEachKind, AReadOfNothingEndsTheText) {
    RecordingStream stream("123456");
    stream.chunk = 3;
    stream.reads = {{2, 2, RecordingStream::Outcome::Zero}};
    EXPECT_EQ("123", text(TypeParam(StringFilterModeReplace).readAnsi(stream)));
}

TEST(OCStringFilter, StreamsThatCannotSeekKeepWhatWasFetched) {
    RecordingStream stream("12a34");
    stream.seekThrows = true;
    EXPECT_EQ("12", text(OCNumericStringFilter(mode(5)).readAnsi(stream)));
    EXPECT_THROW(OCNumericStringFilter(mode(2)).readAnsi(*std::make_unique<RecordingStream>("x")),
                 OXStringFilter_DecodeError);
}

/// What a filter reads and writes, from its description.
struct Model {
    enum Kind { Octet, T61, Utf8, Ia5, Numeric, Printable, Visible };

    Kind kind;
    int mode;
    bool refused = false;
    unsigned long consumed = 0;

    bool isValid(int byte) const {
        const bool digit = byte >= '0' && byte <= '9';
        switch (kind) {
        case Numeric:
            return digit || byte == ' ';
        case Printable:
            return digit || (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
                   byte == ' ' ||
                   (byte != 0 &&
                    std::string("'()+,-./:=?").find(static_cast<char>(byte)) != std::string::npos);
        case Visible:
            return byte >= 32 && byte < 127;
        default:
            return byte < 128;
        }
    }
    char mask() const { return kind == Numeric ? ' ' : '.'; }

    std::string read(const std::string& input) {
        std::string result;
        refused = false;
        for (consumed = 0; consumed < input.size();) {
            const char c = input[consumed++];
            const int byte = static_cast<unsigned char>(c);
            if (kind == Utf8) {
                if (byte < 128)
                    result += c;
                else if (byte >= 0xC0)
                    result += '.';
            } else if (kind == Octet || kind == T61 || isValid(byte)) {
                result += c;
            } else if (mode == 0) {
                result += mask();
            } else if (mode != 1) {
                refused = mode == 2;
                break;
            }
        }
        return result;
    }
    std::string write(const std::string& input) const {
        std::string result;
        for (const char c : input) {
            const int byte = static_cast<unsigned char>(c);
            result += kind == Octet || kind == T61 || isValid(byte) ? c : mask();
        }
        return result;
    }
    std::string writeWide(const std::wstring& input) const {
        std::string result;
        for (const wchar_t c : input) {
            const bool byte = c >= 0 && c <= 255;
            const bool valid = byte && (kind == Octet || kind == T61 || isValid(c));
            result += valid ? static_cast<char>(c) : mask();
            if (kind == Utf8 && valid)
                result += '.';
        }
        return result;
    }
};

template<class Filter>
constexpr Model::Kind kindOf() {
    return std::is_same_v<Filter, OCOctetStringFilter>       ? Model::Octet
           : std::is_same_v<Filter, OCT61StringFilter>       ? Model::T61
           : std::is_same_v<Filter, OCUtf8StringFilter>      ? Model::Utf8
           : std::is_same_v<Filter, OCIa5StringFilter>       ? Model::Ia5
           : std::is_same_v<Filter, OCNumericStringFilter>   ? Model::Numeric
           : std::is_same_v<Filter, OCPrintableStringFilter> ? Model::Printable
                                                             : Model::Visible;
}

/// Reads `input`, given out `chunk` bytes at a time. What came of it, with the calls of the stream.
template<class Filter>
std::string outcomeOfReading(const Filter& filter, const std::string& input, unsigned long chunk,
                             bool wide, std::vector<std::string>& calls, unsigned long& position) {
    RecordingStream stream(input);
    stream.chunk = chunk;
    std::string outcome;
    try {
        if (wide) {
            for (const wchar_t c : text(filter.readWide(stream)))
                outcome += static_cast<wchar_t>(static_cast<signed char>(c)) == c
                               ? static_cast<char>(c)
                               : '?';
        } else {
            outcome = text(filter.readAnsi(stream));
        }
    } catch (const OXStringFilter_DecodeError&) {
        outcome = "refused";
    }
    calls = stream.takeCalls();
    position = stream.position;
    return outcome;
}

TYPED_TEST(OCStringFilterOfEachKind, AgreesWithAModelAndWithADerivedFilter) {
    constexpr unsigned int seed = 20240609;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    for (int round = 0; round < 400; ++round) {
        SCOPED_TRACE(round);
        const int value = modes[random() % 8];
        const TypeParam filter(mode(value));
        const Derived<TypeParam> derived(mode(value));
        Model model{kindOf<TypeParam>(), value};
        // Mostly digits, so that something is valid for all; around the size of a block.
        const unsigned long size = random() % 3 == 0 ? 4000 + random() % 5000 : random() % 300;
        const unsigned int invalid = random() % 4 == 0 ? 2 : 1000;
        std::string input;
        std::wstring wideInput;
        for (unsigned long i = 0; i < size; ++i) {
            const bool odd = random() % invalid == 0;
            input += static_cast<char>(odd ? random() : '0' + random() % 10);
            wideInput +=
                odd ? static_cast<wchar_t>(random() % 4 == 0 ? random() : random() % 300) : L'7';
        }
        const unsigned long chunk = random() % 2 == 0 ? ULONG_MAX : 1 + random() % 5000;

        std::string expected = model.read(input);
        if (model.refused)
            expected = "refused";
        for (const bool wide : {false, true}) {
            std::vector<std::string> calls, derivedCalls;
            unsigned long position = 0, derivedPosition = 0;
            ASSERT_EQ(expected, outcomeOfReading(filter, input, chunk, wide, calls, position));
            ASSERT_EQ(expected,
                      outcomeOfReading(derived, input, chunk, wide, derivedCalls, derivedPosition));
            ASSERT_EQ(derivedCalls, calls);
            ASSERT_EQ(model.consumed, position);
            ASSERT_EQ(model.consumed, derivedPosition);
        }

        RecordingStream stream, derivedStream;
        // A write that fails somewhere, sometimes.
        const unsigned long failing = 1 + random() % 8;
        const RecordingStream::Rule rule = {failing, failing + random() % 2,
                                            random() % 2 == 0 ? RecordingStream::Outcome::Throw
                                                              : RecordingStream::Outcome::Refuse};
        for (const bool wide : {false, true}) {
            for (RecordingStream* const target : {&stream, &derivedStream}) {
                const OCAbstractStringFilter& writing =
                    target == &stream ? static_cast<const OCAbstractStringFilter&>(filter)
                                      : derived;
                target->data.clear();
                target->position = 0;
                target->writeCount = 0;
                target->chunk = chunk;
                if (round % 4 == 0)
                    target->writes = {rule};
                else
                    target->writes.clear();
                try {
                    if (wide)
                        writing.writeWide(*target, string(wideInput));
                    else
                        writing.writeAnsi(*target, string(input));
                } catch (const RecordingStream::Error&) {
                    target->calls.push_back("error");
                } catch (const OXStream_WriteError&) {
                    target->calls.push_back("refused");
                }
            }
            ASSERT_EQ(derivedStream.takeCalls(), stream.takeCalls());
            ASSERT_EQ(derivedStream.data, stream.data);
            if (round % 4 != 0) {
                ASSERT_EQ(wide ? model.writeWide(wideInput) : model.write(input), stream.data);
            }
        }
    }
}

TYPED_TEST(OCStringFilterOfEachKind, FailedAllocationsLeaveNothing) {
    const TypeParam filter(StringFilterModeReplace);
    const Derived<TypeParam> derived(StringFilterModeReplace);
    const std::string content(10000, '1');
    OCMemoryStream stream(content.data(), content.size());
    const OCAnsiString narrow(string(content));
    const OCWideString wide(narrow);
    OCNullStream target;
    const long blocks = fault::heapRecord().liveBlocks;
    for (const OCAbstractStringFilter* const each :
         {static_cast<const OCAbstractStringFilter*>(&filter),
          static_cast<const OCAbstractStringFilter*>(&derived)}) {
        EXPECT_LT(2u, fault::failEachRequest([&] {
                      stream.setPosition(0);
                      each->readAnsi(stream);
                  }));
        EXPECT_LT(2u, fault::failEachRequest([&] {
                      stream.setPosition(0);
                      each->readWide(stream);
                  }));
        EXPECT_EQ(1u, fault::failEachRequest([&] { each->writeAnsi(target, narrow); }));
        EXPECT_EQ(1u, fault::failEachRequest([&] { each->writeWide(target, wide); }));
    }
    EXPECT_EQ(blocks, fault::heapRecord().liveBlocks);
}

TYPED_TEST(OCStringFilterOfEachKind, ResultsHaveNoSpareRoom) {
    for (const unsigned long size : {10UL, 127UL, 128UL, 4096UL, 10000UL}) {
        OCMemoryStream stream(std::string(size, '1').data(), size);
        const OCAnsiString narrow(TypeParam(StringFilterModeReplace).readAnsi(stream));
        EXPECT_EQ((size + 64) / 64 * 64, narrow.getCapacity());
        stream.setPosition(0);
        const OCWideString wide(TypeParam(StringFilterModeReplace).readWide(stream));
        EXPECT_EQ((size + 64) / 64 * 64, wide.getCapacity());
    }
}

TYPED_TEST(OCStringFilterOfEachKind, LongTextsTakeLinearTime) {
    // 64 MiB at the end; every other byte is invalid, if a byte can be.
    const unsigned long n = (fault::sanitized ? 1 : 8) * 1024UL * 1024UL;
    std::string all(8 * n, '1');
    for (unsigned long i = 1; i < all.size(); i += 2)
        all[i] = '\xC3';
    const TypeParam filter(StringFilterModeSkip);
    const double growthOfTime = growth::ofEightTimes(
        [&](unsigned long count) {
            OCMemoryStream stream(all.data(), count);
            const OCAnsiString read(filter.readAnsi(stream));
            EXPECT_EQ(count, stream.getPosition());
            OCNullStream target;
            filter.writeAnsi(target, read);
        },
        n);
    EXPECT_LT(growthOfTime, 30);
}

} // namespace
