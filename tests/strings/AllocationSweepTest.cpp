#include "support/AllocationSweep.h"

#include "OCBoolean.h"
#include "OCInteger.h"
#include "OCMemoryStream.h"
#include "OCStringConversion.h"
#include "OCStringFilter.h"
#include "OCStringUtilities.h"

#include <memory>
#include <ostream>
#include <streambuf>
#include <string>

namespace {

const std::string characters(300, 'n');
const std::wstring wideCharacters(300, L'n');
const OCAnsiString longText(characters.c_str());
const OCWideString longWide(wideCharacters.c_str());
const OCAnsiString colons(std::string(200, ':').c_str());
const OCAnsiString quoted((std::string(200, 'a') + '"' + std::string(200, ':')).c_str());
const OCAnsiString missing("~");

/// 255 characters, which fill the capacity of 256.
const OCAnsiString
    full((std::string(64, ' ') + std::string(127, 'A') + std::string(64, ' ')).c_str());
const OCWideString fullWide(full);

template<class Text>
auto on(const Text& text) {
    return sweep::Operations([&text] { return std::make_unique<Text>(text); },
                             [](const Text& s) { return sweep::seen(s); });
}

/// Takes characters and keeps none.
class NowhereBuffer : public std::streambuf {
    int overflow(int c) override { return c; }
    std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
};

TEST(AllocationSweep, AnsiStringConstruction) {
    const auto make = sweep::results();
    make("text and length", [](auto&) { OCAnsiString(characters.c_str(), 300); });
    make("text", [](auto&) { OCAnsiString(characters.c_str()); });
    make("copy", [](auto&) { OCAnsiString{longText}; });
    make("wide text", [](auto&) { OCAnsiString{longWide}; });
    make("new", [](auto&) { delete new OCAnsiString("n"); });
    make("new of a long text", [](auto&) { delete new OCAnsiString(longText); });
    make("concat", [](auto&) { longText.concat(longText); });
    make("concat of paths", [](auto&) { longText.concat(longText, StringConcatPath); });
    make("+", [](auto&) { longText + longText; });
    make("text +", [](auto&) { "n" + longText; });
    // NOLINTNEXTLINE(misc-redundant-expression): a path is put together, nothing divided
    make("/", [](auto&) { longText / longText; });
    make("text /", [](auto&) { "n" / longText; });
}

TEST(AllocationSweep, AnsiStringOperations) {
    const auto ansi = on(full);
    ansi("assign text and length", [](auto& s) { s.assign(characters.c_str(), 300); });
    ansi("assign text", [](auto& s) { s.assign(characters.c_str()); });
    ansi("assign", [](auto& s) { s.assign(longText); });
    ansi("=", [](auto& s) { s = longText; });
    ansi("assign wide", [](auto& s) { s.assign(longWide); });
    ansi("setLength", [](auto& s) { s.setLength(2000).fill('x'); });
    ansi("append a character", [](auto& s) { s.append('x'); });
    ansi("append a character to a path", [](auto& s) { s.append('x', StringConcatPath); });
    ansi("append text", [](auto& s) { s.append("x"); });
    ansi("append text to a path", [](auto& s) { s.append("x", StringConcatPath); });
    ansi("append text and length", [](auto& s) { s.append(characters.c_str(), 9); });
    ansi("append", [](auto& s) { s.append(longText); });
    ansi("append itself", [](auto& s) { s.append(s); });
    ansi("append path", [](auto& s) { s.append(longText, StringConcatPath); });
    ansi("+=", [](auto& s) { s += longText; });
    ansi("+= text", [](auto& s) { s += "x"; });
    ansi("+= character", [](auto& s) { s += 'x'; });
    ansi("/=", [](auto& s) { s /= longText; });
    ansi("/= text", [](auto& s) { s /= "x"; });
    ansi("/= character", [](auto& s) { s /= 'x'; });
    ansi("insert at", [](auto& s) { s.insert(7, longText); });
    ansi("insert itself at", [](auto& s) { s.insert(7, s); });
    ansi("insert", [](auto& s) { s.insert(longText); });
    ansi("padLeft", [](auto& s) { s.padLeft('x', 400); });
    ansi("padRight", [](auto& s) { s.padRight('x', 400); });
    ansi("replace by more", [](auto& s) { s.replace("A", longText); });
    ansi("replace by as much", [](auto& s) { s.replace(s, longText); });
    ansi("replace in any case", [](auto& s) { s.replace("aa", "xxx", StringCaseInsensitive); });
    ansi("escape", [](auto& s) { s.escape(); });
    // Shortening keeps the block when there is no smaller one to be had.
    ansi.managing("setLength, less", [](auto& s) { s.setLength(130); });
    ansi.managing("left", [](auto& s) { s.left(130); });
    ansi.managing("right", [](auto& s) { s.right(130); });
    ansi.managing("mid", [](auto& s) { s.mid(7, 130); });
    ansi.managing("remove", [](auto& s) { s.remove(7, 120); });
    ansi.managing("replace by less", [](auto& s) { s.replace("AAAA", "B"); });

    const OCAnsiString spaced(
        (std::string(150, ' ') + std::string(200, 'A') + std::string(150, ' ')).c_str());
    const auto trimmed = on(spaced);
    trimmed.managing("trimLeft", [](auto& s) { s.trimLeft(); });
    trimmed.managing("trimRight", [](auto& s) { s.trimRight(); });
    trimmed.managing("trim", [](auto& s) { s.trim(); });
    OCAnsiString escaped(colons);
    escaped.escape();
    on(escaped)("unescape", [](auto& s) { s.unescape(); });
}

TEST(AllocationSweep, AnsiStringComparisons) {
    const char* const text = characters.c_str();
    const auto make = sweep::results();
    make("==", [=](auto&) { EXPECT_TRUE(text == longText); });
    make("!=", [=](auto&) { EXPECT_FALSE(text != longText); });
    make("<", [=](auto&) { EXPECT_FALSE(text < longText); });
    make("<=", [=](auto&) { EXPECT_TRUE(text <= longText); });
    make(">", [=](auto&) { EXPECT_FALSE(text > longText); });
    make(">=", [=](auto&) { EXPECT_TRUE(text >= longText); });
}

TEST(AllocationSweep, AnsiStringRefusals) {
    const auto ansi = on(full);
    ansi("[]", [](auto& s) { sweep::refused<OXString_NoSuchIndex>([&] { s[255]; }); });
    ansi("[] of what does not change",
         [](const auto& s) { sweep::refused<OXString_NoSuchIndex>([&] { s[255]; }); });
    ansi("throwNoSuchIndex", [](auto&) {
        sweep::refused<OXString_NoSuchIndex>([] { OCAbstractString::throwNoSuchIndex(7); });
    });
    ansi("insert behind",
         [](auto& s) { sweep::refused<OXString_NoSuchIndex>([&] { s.insert(255, longText); }); });
    ansi("mid behind",
         [](auto& s) { sweep::refused<OXString_NoSuchIndex>([&] { s.mid(255, 1); }); });
    ansi("remove behind",
         [](auto& s) { sweep::refused<OXString_NoSuchIndex>([&] { s.remove(255, 1); }); });
}

TEST(AllocationSweep, WideStringConstruction) {
    const auto make = sweep::results();
    make("text and length", [](auto&) { OCWideString(wideCharacters.c_str(), 300); });
    make("text", [](auto&) { OCWideString(wideCharacters.c_str()); });
    make("copy", [](auto&) { OCWideString{longWide}; });
    make("narrow text", [](auto&) { OCWideString{longText}; });
    make("new", [](auto&) { delete new OCWideString(L"n"); });
    make("new of a long text", [](auto&) { delete new OCWideString(longWide); });
    make("concat", [](auto&) { longWide.concat(longWide); });
    make("+", [](auto&) { longWide + longWide; });
    make("text +", [](auto&) { L"n" + longWide; });
    NowhereBuffer buffer;
    std::ostream stream(&buffer);
    make("<<", [&](auto&) { stream << longWide; });
}

TEST(AllocationSweep, WideStringOperations) {
    const auto wide = on(fullWide);
    wide("assign text and length", [](auto& s) { s.assign(wideCharacters.c_str(), 300); });
    wide("assign text", [](auto& s) { s.assign(wideCharacters.c_str()); });
    wide("assign", [](auto& s) { s.assign(longWide); });
    wide("=", [](auto& s) { s = longWide; });
    wide("assign narrow", [](auto& s) { s.assign(longText); });
    wide("setLength", [](auto& s) { s.setLength(2000).fill('x'); });
    wide("append a character", [](auto& s) { s.append(L'x'); });
    wide("append text", [](auto& s) { s.append(L"x"); });
    wide("append text and length", [](auto& s) { s.append(wideCharacters.c_str(), 9); });
    wide("append", [](auto& s) { s.append(longWide); });
    wide("append itself", [](auto& s) { s.append(s); });
    wide("+=", [](auto& s) { s += longWide; });
    wide("+= text", [](auto& s) { s += L"x"; });
    wide("+= character", [](auto& s) { s += L'x'; });
    wide("insert at", [](auto& s) { s.insert(7, longWide); });
    wide("insert itself at", [](auto& s) { s.insert(7, s); });
    wide("insert", [](auto& s) { s.insert(longWide); });
    wide("padLeft", [](auto& s) { s.padLeft(L'x', 400); });
    wide("padRight", [](auto& s) { s.padRight(L'x', 400); });
    wide("replace by more", [](auto& s) { s.replace(L"A", longWide); });
    wide("replace by as much", [](auto& s) { s.replace(s, longWide); });
    wide("replace in any case", [](auto& s) { s.replace(L"aa", L"xxx", StringCaseInsensitive); });
    wide("comparison with narrow text", [](auto& s) { EXPECT_TRUE(s == full); });
    wide("order among narrow texts", [](auto& s) { EXPECT_FALSE(full < s); });
    wide("[] of what does not change",
         [](const auto& s) { sweep::refused<OXString_NoSuchIndex>([&] { s[255]; }); });
    wide("[]", [](auto& s) { sweep::refused<OXString_NoSuchIndex>([&] { s[255]; }); });
    wide("insert behind",
         [](auto& s) { sweep::refused<OXString_NoSuchIndex>([&] { s.insert(255, longWide); }); });
    wide("right of too little", [](auto& s) { s.right(300).append(longWide); });
    wide("mid behind",
         [](auto& s) { sweep::refused<OXString_NoSuchIndex>([&] { s.mid(255, 1); }); });
    wide("remove behind",
         [](auto& s) { sweep::refused<OXString_NoSuchIndex>([&] { s.remove(255, 1); }); });
    // Shortening keeps the block when there is no smaller one to be had.
    wide.managing("setLength, less", [](auto& s) { s.setLength(130); });
    wide.managing("left", [](auto& s) { s.left(130); });
    wide.managing("right", [](auto& s) { s.right(130); });
    wide.managing("mid", [](auto& s) { s.mid(7, 130); });
    wide.managing("remove", [](auto& s) { s.remove(7, 120); });
    wide.managing("replace by less", [](auto& s) { s.replace(L"A", L""); });
    const OCWideString spaced(OCAnsiString(
        (std::string(150, ' ') + std::string(200, 'A') + std::string(150, ' ')).c_str()));
    const auto trimmed = on(spaced);
    trimmed.managing("trimLeft", [](auto& s) { s.trimLeft(); });
    trimmed.managing("trimRight", [](auto& s) { s.trimRight(); });
    trimmed.managing("trim", [](auto& s) { s.trim(); });
}

TEST(AllocationSweep, ConversionsOfLongTexts) {
    const auto result = sweep::results();
    result("parseNegative",
           [](auto&) { EXPECT_EQ(0, OCSignedIntegerConversion::parseNegative(longText, 10)); });
    result("parsePositive",
           [](auto&) { EXPECT_EQ(0, OCSignedIntegerConversion::parsePositive(longText, 10)); });
    // These exceptions carry nothing, and the language keeps room to throw them.
    result.managing("signed fromString", [](auto&) {
        sweep::refused<OXIntegerConversion_ConvertStringError>(
            [] { OCSignedIntegerConversion::fromString(OCAnsiString(), 10); });
    });
    result.managing("unsigned fromString", [](auto&) {
        sweep::refused<OXIntegerConversion_ConvertStringError>(
            [] { OCUnsignedIntegerConversion::fromString(OCAnsiString(), 10); });
    });
    result.managing("boolean fromString", [](auto&) {
        sweep::refused<OXBooleanConversion_ConvertStringError>(
            [] { OCBooleanConversion::fromString(longText); });
    });
    result.managing("fromSize", [](auto&) {
        sweep::refused<OXIntegerConversion_ConvertSizeError>(
            [] { OCUnsignedIntegerConversion::fromSize(~0UL); });
    });
}

TEST(AllocationSweep, StringUtilities) {
    const auto result = sweep::results();
    result("addParentheses", [](auto&) { OCStringUtilities::addParentheses(longText, true); });
    result("addQuotes", [](auto&) { OCStringUtilities::addQuotes(quoted, true); });
    result("addQuotes where none are needed",
           [](auto&) { OCStringUtilities::addQuotes(longText, false); });
}

std::string written(const OCMemoryStream& stream) {
    return sweep::seen(stream.makeString());
}

template<class Filter>
void sweepFilter(const char* name) {
    SCOPED_TRACE(name);
    static const Filter filter(StringFilterModeReplace);
    const std::string numbers(1000, '1');
    const OCAnsiString text(numbers.c_str());
    const OCWideString wide(text);
    const sweep::Operations source(
        [&] { return std::make_unique<OCMemoryStream>(numbers.data(), numbers.size()); },
        [](const OCMemoryStream& stream) { return written(stream); });
    source("readAnsi", [&](OCStream& stream) { EXPECT_TRUE(filter.readAnsi(stream) == text); });
    source("readWide", [&](OCStream& stream) { EXPECT_TRUE(filter.readWide(stream) == wide); });
    const sweep::Operations target([] { return std::make_unique<OCMemoryStream>("before", 6UL); },
                                   [](const OCMemoryStream& stream) { return written(stream); });
    // The writer inside tries once more when it ends, and may then have its way.
    target.leavingAllOrNothing("writeAnsi", [&](OCStream& s) { filter.writeAnsi(s, text); });
    target.leavingAllOrNothing("writeWide", [&](OCStream& s) { filter.writeWide(s, wide); });
}

TEST(AllocationSweep, StringFilters) {
    sweepFilter<OCOctetStringFilter>("octet");
    sweepFilter<OCT61StringFilter>("T61");
    sweepFilter<OCUtf8StringFilter>("UTF-8");
    sweepFilter<OCIa5StringFilter>("IA5");
    sweepFilter<OCNumericStringFilter>("numeric");
    sweepFilter<OCPrintableStringFilter>("printable");
    sweepFilter<OCVisibleStringFilter>("visible");
}

TEST(AllocationSweep, StringsAndStreams) {
    const sweep::Operations stream([] { return std::make_unique<OCMemoryStream>("before", 6UL); },
                                   [](const OCMemoryStream& subject) { return written(subject); });
    stream("exportStream",
           [](OCStream& s) { OCStringUtilities::exportStream(longText + longText, s); });
    const sweep::Operations filled(
        [] { return std::make_unique<OCMemoryStream>(characters.data(), 300UL); },
        [](const OCMemoryStream& subject) { return written(subject); });
    filled("importStream",
           [](OCStream& s) { EXPECT_TRUE(OCStringUtilities::importStream(s) == longText); });
}

} // namespace
