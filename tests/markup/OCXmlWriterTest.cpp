#include "OCXmlWriter.h"
#include "OCMemoryStream.h"
#include "support/Exceptions.h"
#include "support/FaultInjection.h"
#include "support/RecordingStream.h"
#include "support/Slots.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using Calls = std::vector<std::string>;

/// A stream that has taken its memory in advance, for tests with a failing heap.
class QuietStream : public OCNullStream {
public:
    QuietStream() { text.reserve(1 << 20); }

    bool write(const void* buffer, unsigned long& count) override {
        ++writes;
        text.append(static_cast<const char*>(buffer), count);
        return true;
    }

    std::string text;
    unsigned long writes = 0;
};

/// Characters as the bytes that lie in memory.
std::string bytesOf(const std::wstring& text) {
    return std::string(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t));
}

OCWideString repeated(wchar_t c, unsigned long count) {
    OCWideString text;
    text.setLength(count);
    text.fill(c);
    return text;
}

/// What `write` makes of a text at depth 1.
std::string written(const OCWideString& text) {
    RecordingStream stream;
    OCXmlWriterOutput output(stream, XmlEncodingAnsi);
    output.indent();
    output.write(text);
    return stream.data;
}

// Layout

TEST(OCXmlWriterLayout, HoldsTheFieldsAndNoMore) {
    EXPECT_EQ(584u, sizeof(OCXmlWriterOutput));
    EXPECT_EQ(8 + 2 * sizeof(OCWideString), sizeof(OCXmlWriterElementAttribute));
    EXPECT_EQ(8 + sizeof(OCVector), sizeof(OCXmlWriterElementAttributeList));
    EXPECT_EQ(8 + sizeof(OCStack), sizeof(OCXmlWriterElementStack));
    EXPECT_EQ(24u, sizeof(OCXmlWriter));
}

TEST(OCXmlWriterLayout, HasOnlyVirtualDestructors) {
    EXPECT_EQ(2u, slots::slotCount<OCXmlWriterOutput>());
    EXPECT_EQ(2u, slots::slotCount<OCXmlWriterElementAttribute>());
    EXPECT_EQ(2u, slots::slotCount<OCXmlWriterElementAttributeList>());
    EXPECT_EQ(2u, slots::slotCount<OCXmlWriterElementStack>());
    EXPECT_EQ(2u, slots::slotCount<OCXmlWriter>());
}

TEST(OCXmlWriterLayout, IsNotCopiedWhereItOwnsOrRefers) {
    EXPECT_FALSE(std::is_copy_constructible_v<OCXmlWriterOutput>);
    EXPECT_FALSE(std::is_copy_constructible_v<OCXmlWriterElementAttributeList>);
    EXPECT_FALSE(std::is_copy_constructible_v<OCXmlWriterElementStack>);
    EXPECT_FALSE(std::is_copy_constructible_v<OCXmlWriter>);
    EXPECT_FALSE(std::is_copy_assignable_v<OCXmlWriterElementAttributeList>);
    EXPECT_FALSE(std::is_copy_assignable_v<OCXmlWriterElementStack>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCXmlWriterOutput>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<OCXmlWriter>);
    EXPECT_TRUE((std::is_base_of_v<OCObject, OCXmlWriterOutput>));
    EXPECT_TRUE((std::is_base_of_v<OCObject, OCXmlWriterElementAttribute>));
    EXPECT_TRUE((std::is_base_of_v<OCObject, OCXmlWriterElementAttributeList>));
    EXPECT_TRUE((std::is_base_of_v<OCObject, OCXmlWriterElementStack>));
    EXPECT_TRUE((std::is_base_of_v<OCObject, OCXmlWriter>));
}

// The output

TEST(OCXmlWriterOutput, WritesNothingByItself) {
    RecordingStream stream;
    {
        OCXmlWriterOutput output(stream, XmlEncodingAnsi);
        output.indent();
        output.unindent();
        output.setIndent(false);
    }
    EXPECT_EQ(Calls(), stream.takeCalls());
}

TEST(OCXmlWriterOutput, WritesALineWithOneWrite) {
    RecordingStream stream;
    OCXmlWriterOutput output(stream, XmlEncodingAnsi);
    output.writeLine(L"abc");
    EXPECT_EQ(Calls({"write 5 -> 5"}), stream.takeCalls());
    output.indent();
    output.writeLine(L"d");
    EXPECT_EQ(Calls({"write 5 -> 5"}), stream.takeCalls());
    EXPECT_EQ("abc\r\n  d\r\n", stream.data);
}

TEST(OCXmlWriterOutput, WritesAnEmptyLineWithoutIndentation) {
    RecordingStream stream;
    OCXmlWriterOutput output(stream, XmlEncodingAnsi);
    output.writeLine(L"");
    output.indent();
    output.writeLine(L"");
    EXPECT_EQ("\r\n\r\n", stream.data);
    EXPECT_EQ(Calls({"write 2 -> 2", "write 2 -> 2"}), stream.takeCalls());
}

TEST(OCXmlWriterOutput, LeavesBreaksInsideOneLineAlone) {
    RecordingStream stream;
    OCXmlWriterOutput output(stream, XmlEncodingAnsi);
    output.indent();
    output.writeLine(L"a\nb\rc\r\n");
    EXPECT_EQ("  a\nb\rc\r\n\r\n", stream.data);
    EXPECT_EQ(Calls({"write 11 -> 11"}), stream.takeCalls());
}

TEST(OCXmlWriterOutput, IndentsByTwoSpacesAStep) {
    RecordingStream stream;
    OCXmlWriterOutput output(stream, XmlEncodingAnsi);
    output.indent();
    output.indent();
    output.writeLine(L"x");
    output.unindent();
    output.writeLine(L"y");
    output.unindent();
    output.writeLine(L"z");
    EXPECT_EQ("    x\r\n  y\r\nz\r\n", stream.data);
}

TEST(OCXmlWriterOutput, StaysAtDepthZeroWhenUnindentedFurther) {
    RecordingStream stream;
    OCXmlWriterOutput output(stream, XmlEncodingAnsi);
    output.unindent();
    output.unindent();
    output.writeLine(L"x");
    output.indent();
    output.writeLine(L"y");
    EXPECT_EQ("x\r\n  y\r\n", stream.data);
}

TEST(OCXmlWriterOutput, KeepsItsDepthWhileIndentationIsOff) {
    RecordingStream stream;
    OCXmlWriterOutput output(stream, XmlEncodingAnsi);
    output.indent();
    output.setIndent(false);
    output.writeLine(L"a");
    output.write(L"b\nc");
    output.indent();
    output.indent();
    output.writeLine(L"d");
    output.unindent();
    output.unindent();
    output.unindent();
    output.setIndent(true);
    output.writeLine(L"e");
    EXPECT_EQ("a\r\nb\r\nc\r\nd\r\n  e\r\n", stream.data);
}

TEST(OCXmlWriterOutput, CutsATextAtEveryKindOfBreak) {
    EXPECT_EQ("", written(L""));
    EXPECT_EQ("  a\r\n", written(L"a"));
    EXPECT_EQ("  a\r\n  b\r\n", written(L"a\nb"));
    EXPECT_EQ("  a\r\n  b\r\n", written(L"a\rb"));
    EXPECT_EQ("  a\r\n  b\r\n", written(L"a\r\nb"));
    EXPECT_EQ("  a\r\n\r\n  b\r\n", written(L"a\n\rb"));
    EXPECT_EQ("  a\r\n\r\n  b\r\n", written(L"a\r\r\nb"));
    EXPECT_EQ("  a\r\n\r\n  b\r\n", written(L"a\r\n\nb"));
    EXPECT_EQ("  a\r\n\r\n\r\n  b\r\n", written(L"a\r\n\r\r\nb"));
    EXPECT_EQ("\r\n  a\r\n", written(L"\na"));
    EXPECT_EQ("\r\n  a\r\n", written(L"\r\na"));
}

TEST(OCXmlWriterOutput, MakesNoFurtherLineOfABreakAtTheEnd) {
    EXPECT_EQ("  a\r\n", written(L"a\n"));
    EXPECT_EQ("  a\r\n", written(L"a\r"));
    EXPECT_EQ("  a\r\n", written(L"a\r\n"));
    EXPECT_EQ("  a\r\n\r\n", written(L"a\n\n"));
    EXPECT_EQ("  a\r\n\r\n", written(L"a\r\n\r\n"));
    EXPECT_EQ("\r\n", written(L"\n"));
    EXPECT_EQ("\r\n", written(L"\r"));
    EXPECT_EQ("\r\n", written(L"\r\n"));
    EXPECT_EQ("\r\n\r\n", written(L"\n\r"));
}

TEST(OCXmlWriterOutput, CutsAtCharactersAndNotAtTheirLowBytes) {
    const wchar_t text[] = {L'a', 0x10A, L'b', 0x50D, L'c', -246, L'\n', 0};
    EXPECT_EQ(std::string("  a\nb\rc\n\r\n"), written(text));
}

TEST(OCXmlWriterOutput, KeepsZeroCharactersAndBlanks) {
    EXPECT_EQ(std::string("  \0x \0\r\n   \t \r\n", 15), written(OCWideString(L"\0x \0\n \t ", 8)));
}

TEST(OCXmlWriterOutput, WritesEachPieceWithOneWrite) {
    RecordingStream stream;
    OCXmlWriterOutput output(stream, XmlEncodingAnsi);
    output.indent();
    output.write(L"one\n\ntwo\r\n");
    EXPECT_EQ(Calls({"write 7 -> 7", "write 2 -> 2", "write 7 -> 7"}), stream.takeCalls());
    output.write(L"");
    EXPECT_EQ(Calls(), stream.takeCalls());
}

TEST(OCXmlWriterOutput, WritesLongLinesWithOneWrite) {
    for (const unsigned long length : {1016UL, 1019UL, 1020UL, 1021UL, 1022UL, 5000UL}) {
        RecordingStream stream;
        OCXmlWriterOutput output(stream, XmlEncodingAnsi);
        output.indent();
        output.write(repeated(L'x', length) + OCWideString(L"\ny\n") + repeated(L'z', length));
        EXPECT_EQ("  " + std::string(length, 'x') + "\r\n  y\r\n  " + std::string(length, 'z') +
                      "\r\n",
                  stream.data);
        EXPECT_EQ(3u, stream.writeCount);

        RecordingStream wide;
        OCXmlWriterOutput wideOutput(wide, XmlEncodingWide);
        wideOutput.indent();
        wideOutput.write(repeated(L'x', length / 4));
        EXPECT_EQ(bytesOf(L"  " + std::wstring(length / 4, L'x') + L"\r\n"), wide.data);
        EXPECT_EQ(1u, wide.writeCount);
    }
}

TEST(OCXmlWriterOutput, WritesOneLineOfEveryLength) {
    for (unsigned long length = 240; length <= 1040; ++length) {
        RecordingStream stream;
        stream.recording = false;
        OCXmlWriterOutput output(stream, XmlEncodingAnsi);
        output.indent();
        output.write(repeated(L'x', length));
        EXPECT_EQ("  " + std::string(length, 'x') + "\r\n", stream.data);

        RecordingStream wide;
        wide.recording = false;
        OCXmlWriterOutput wideOutput(wide, XmlEncodingWide);
        wideOutput.indent();
        wideOutput.write(repeated(L'x', length));
        EXPECT_EQ(bytesOf(L"  " + std::wstring(length, L'x') + L"\r\n"), wide.data);
    }
}

TEST(OCXmlWriterOutput, WritesWideCharactersAsTheirFourBytes) {
    RecordingStream stream;
    OCXmlWriterOutput output(stream, XmlEncodingWide);
    output.writeLine(L"<a>");
    EXPECT_EQ(Calls({"write 20 -> 20"}), stream.takeCalls());
    EXPECT_EQ(bytesOf(L"<a>\r\n"), stream.data);
    EXPECT_EQ(std::string("<\0\0\0a\0\0\0>\0\0\0\r\0\0\0\n\0\0\0", 20), stream.data);
    output.indent();
    const wchar_t text[] = {0x10FFFF, -23, L'\n', L'\n', L'\r', L'x', 0};
    output.write(text);
    const wchar_t expected[] = {L' ',  L' ',  0x10FFFF, -23,  L'\r', L'\n', L'\r', L'\n',
                                L'\r', L'\n', L' ',     L' ', L'x',  L'\r', L'\n', 0};
    EXPECT_EQ(bytesOf(std::wstring(L"<a>\r\n") + expected), stream.data);
    EXPECT_EQ(5u, stream.writeCount);
}

TEST(OCXmlWriterOutput, NarrowsWithEveryOtherEncoding) {
    const wchar_t text[] = {L'a', 0xE9, -23, 0x141, 0x20AC, 0};
    for (const int encoding : {0, 2, -1, 1000}) {
        RecordingStream stream;
        OCXmlWriterOutput output(stream, static_cast<OEXmlEncoding>(encoding));
        output.write(text);
        output.writeEncoded(text);
        EXPECT_EQ("a\xE9\xE9\x41\xAC\r\na\xE9\xE9\x41\xAC", stream.data) << encoding;
    }
}

TEST(OCXmlWriterOutput, WritesAnEncodedTextWithNothingAdded) {
    RecordingStream stream;
    OCXmlWriterOutput output(stream, XmlEncodingAnsi);
    output.indent();
    output.writeEncoded(L"a\nb");
    output.writeEncoded(L"");
    EXPECT_EQ("a\nb", stream.data);
    EXPECT_EQ(Calls({"write 3 -> 3"}), stream.takeCalls());

    RecordingStream wideStream;
    OCXmlWriterOutput wide(wideStream, XmlEncodingWide);
    wide.indent();
    wide.writeEncoded(L"a\nb");
    wide.writeEncoded(L"");
    EXPECT_EQ(bytesOf(L"a\nb"), wideStream.data);
    EXPECT_EQ(Calls({"write 12 -> 12"}), wideStream.takeCalls());
}

TEST(OCXmlWriterOutput, GoesOnAfterShortWrites) {
    RecordingStream stream;
    stream.chunk = 3;
    OCXmlWriterOutput output(stream, XmlEncodingAnsi);
    output.write(L"abcde\nf");
    EXPECT_EQ("abcde\r\nf\r\n", stream.data);
    EXPECT_EQ(Calls({"write 7 -> 3", "write 4 -> 3", "write 1 -> 1", "write 3 -> 3"}),
              stream.takeCalls());
}

TEST(OCXmlWriterOutput, StopsAtTheLineThatTheStreamRefuses) {
    for (const OEXmlEncoding encoding : {XmlEncodingAnsi, XmlEncodingWide}) {
        RecordingStream stream;
        stream.writes = {{2, 2, RecordingStream::Outcome::Refuse}};
        OCXmlWriterOutput output(stream, encoding);
        EXPECT_EXCEPTION(output.write(L"a\nb\nc"), OXStream_WriteError,
                         "Writing to the stream failed");
        EXPECT_EQ(encoding == XmlEncodingWide ? bytesOf(L"a\r\n") : "a\r\n", stream.data);
        EXPECT_EQ(2u, stream.writeCount);
        stream.writes = {{3, 4, RecordingStream::Outcome::Throw}};
        EXPECT_THROW(output.writeLine(L"d"), RecordingStream::Error);
        EXPECT_THROW(output.writeEncoded(L"d"), RecordingStream::Error);
        EXPECT_EQ(4u, stream.writeCount);
    }
}

TEST(OCXmlWriterOutput, WritesNothingWhenMemoryIsExhausted) {
    const OCWideString text = repeated(L'x', 3000) + OCWideString(L"\ny");
    for (const OEXmlEncoding encoding : {XmlEncodingAnsi, XmlEncodingWide}) {
        QuietStream stream;
        OCXmlWriterOutput output(stream, encoding);
        output.indent();
        for (void (OCXmlWriterOutput::*const operation)(const OCWideString&) :
             {&OCXmlWriterOutput::write, &OCXmlWriterOutput::writeLine,
              &OCXmlWriterOutput::writeEncoded}) {
            stream.writes = 0;
            const unsigned long failures = fault::failEachRequest(
                [&] { (output.*operation)(text); }, [&] { EXPECT_EQ(0u, stream.writes); });
            // The wide form is written as it lies in the string.
            const bool asItIs =
                encoding == XmlEncodingWide && operation == &OCXmlWriterOutput::writeEncoded;
            EXPECT_EQ(asItIs ? 0u : 1u, failures);
        }
    }
}

TEST(OCXmlWriterOutput, NeedsNoMemoryForShortTexts) {
    QuietStream stream;
    OCXmlWriterOutput output(stream, XmlEncodingAnsi);
    const OCWideString text = repeated(L'x', 127);
    const fault::HeapFault fault(1, fault::HeapFault::Following);
    output.indent();
    output.write(text);
    output.writeLine(text);
    output.writeEncoded(L"abc");
    EXPECT_FALSE(fault.triggered());
    EXPECT_EQ(3u, stream.writes);
}

TEST(OCXmlWriterOutput, KeepsItsDepthWhenIndentationIsRefused) {
    QuietStream stream;
    OCXmlWriterOutput output(stream, XmlEncodingAnsi);
    for (int i = 0; i < 63; ++i)
        output.indent();
    EXPECT_EQ(1u, fault::failEachRequest([&] { output.indent(); },
                                         [&] {
                                             output.writeLine(L"x");
                                             EXPECT_EQ(std::string(126, ' ') + "x\r\n",
                                                       stream.text);
                                         }));
    stream.text.clear();
    output.writeLine(L"x");
    EXPECT_EQ(std::string(128, ' ') + "x\r\n", stream.text);
}

// Attributes

TEST(OCXmlWriterElementAttribute, StartsEmpty) {
    const OCXmlWriterElementAttribute attribute;
    EXPECT_EQ(OCWideString(), attribute.getName());
    EXPECT_EQ(OCWideString(), attribute.getValue());
    EXPECT_EQ(OCWideString(L" "), attribute.makeText());
}

TEST(OCXmlWriterElementAttribute, WritesItsNameAndValueUnchanged) {
    OCXmlWriterElementAttribute attribute;
    attribute.setName(L"k");
    attribute.setValue(L"1 & 2");
    EXPECT_EQ(OCWideString(L"k"), attribute.getName());
    EXPECT_EQ(OCWideString(L"1 & 2"), attribute.getValue());
    EXPECT_EQ(OCWideString(L" k=\"1 & 2\""), attribute.makeText());
    attribute.setValue(L"<\">");
    EXPECT_EQ(OCWideString(L" k=\"<\">\""), attribute.makeText());
    attribute.setName(L"");
    EXPECT_EQ(OCWideString(L" =\"<\">\""), attribute.makeText());
}

TEST(OCXmlWriterElementAttribute, WritesABareNameForAnEmptyValue) {
    OCXmlWriterElementAttribute attribute;
    attribute.setName(L"k");
    EXPECT_EQ(OCWideString(L" k"), attribute.makeText());
    attribute.setValue(OCWideString(L"\0", 1)); // a zero character is a value
    EXPECT_EQ(OCWideString(L" k=\"\0\"", 6), attribute.makeText());
}

TEST(OCXmlWriterElementAttribute, IsCopiedByValue) {
    OCXmlWriterElementAttribute attribute;
    attribute.setName(L"a");
    attribute.setValue(L"1");
    const OCXmlWriterElementAttribute copy(attribute);
    attribute.setName(L"b");
    EXPECT_EQ(OCWideString(L" a=\"1\""), copy.makeText());
    attribute = copy;
    EXPECT_EQ(OCWideString(L" a=\"1\""), attribute.makeText());
}

TEST(OCXmlWriterElementAttribute, StaysAsItWasWhenMemoryIsExhausted) {
    const OCWideString longer = repeated(L'x', 500);
    OCXmlWriterElementAttribute attribute;
    attribute.setName(L"k");
    attribute.setValue(L"v");
    const auto unchanged = [&] { EXPECT_EQ(OCWideString(L" k=\"v\""), attribute.makeText()); };
    {
        const fault::HeapFault fault(1);
        EXPECT_THROW(attribute.setName(longer), OXMemory_AllocationError);
    }
    unchanged();
    {
        const fault::HeapFault fault(1);
        EXPECT_THROW(attribute.setValue(longer), OXMemory_AllocationError);
    }
    unchanged();
    attribute.setName(longer);
    EXPECT_EQ(1u,
              fault::failEachRequest([&] { EXPECT_EQ(505u, attribute.makeText().getLength()); }));
}

TEST(OCXmlWriterElementAttributeList, JoinsItsAttributesInOrder) {
    OCXmlWriterElementAttributeList list;
    EXPECT_EQ(0u, list.getCount());
    EXPECT_EQ(OCWideString(), list.makeText());
    list.addAttribute(L"b", L"2");
    list.addAttribute(L"a");
    list.addAttribute(L"b", L"");
    list.addAttribute(L"b", L"3");
    EXPECT_EQ(4u, list.getCount());
    EXPECT_EQ(OCWideString(L" b=\"2\" a b b=\"3\""), list.makeText());
}

TEST(OCXmlWriterElementAttributeList, OwnsCopies) {
    OCXmlWriterElementAttributeList list;
    OCWideString name(L"name");
    OCWideString value(L"value");
    list.addAttribute(name, value);
    name = L"x";
    value = L"y";
    EXPECT_EQ(OCWideString(L" name=\"value\""), list.makeText());
    list.addAttribute(list.getAttribute(0).getValue(), list.getAttribute(0).getName());
    EXPECT_EQ(OCWideString(L" name=\"value\" value=\"name\""), list.makeText());
}

TEST(OCXmlWriterElementAttributeList, GivesAccessToItsAttributes) {
    OCXmlWriterElementAttributeList list;
    list.addAttribute(L"a", L"1");
    list.addAttribute(L"b", L"2");
    list.getAttribute(1).setValue(L"3");
    const OCXmlWriterElementAttributeList& constant = list;
    EXPECT_EQ(&list.getAttribute(1), &constant.getAttribute(1));
    EXPECT_EQ(OCWideString(L"b"), constant.getAttribute(1).getName());
    EXPECT_EQ(OCWideString(L" a=\"1\" b=\"3\""), list.makeText());
}

TEST(OCXmlWriterElementAttributeList, RefusesAnIndexOutOfBounds) {
    OCXmlWriterElementAttributeList list;
    const OCXmlWriterElementAttributeList& constant = list;
    EXPECT_EXCEPTION(list.getAttribute(0), OXVector_NoSuchIndex, "Vector index out of bounds (0)");
    list.addAttribute(L"a", L"1");
    EXPECT_EXCEPTION(list.getAttribute(1), OXVector_NoSuchIndex, "Vector index out of bounds (1)");
    EXPECT_EXCEPTION(constant.getAttribute(1), OXVector_NoSuchIndex,
                     "Vector index out of bounds (1)");
    EXPECT_EXCEPTION(constant.getAttribute(4294967295U), OXVector_NoSuchIndex,
                     "Vector index out of bounds (4294967295)");
}

TEST(OCXmlWriterElementAttributeList, CanBeEmptiedAndFilledAgain) {
    const long left = fault::blocksLeftBy([] {
        OCXmlWriterElementAttributeList list;
        void (OCXmlWriterElementAttributeList::*const operations[])() noexcept = {
            &OCXmlWriterElementAttributeList::destroy,
            &OCXmlWriterElementAttributeList::destroyAttributes};
        for (const auto operation : operations) {
            for (int i = 0; i < 100; ++i)
                list.addAttribute(L"a", repeated(L'x', 200));
            const long blocks = fault::heapRecord().liveBlocks;
            (list.*operation)();
            EXPECT_EQ(blocks - 201, fault::heapRecord().liveBlocks);
            EXPECT_EQ(0u, list.getCount());
            EXPECT_EQ(OCWideString(), list.makeText());
            (list.*operation)();
            list.addAttribute(L"b");
            EXPECT_EQ(OCWideString(L" b"), list.makeText());
            (list.*operation)();
        }
        list.addAttribute(L"c"); // for the destructor
    });
    EXPECT_EQ(0, left);
}

TEST(OCXmlWriterElementAttributeList, CanBeEmptiedWhenMemoryIsExhausted) {
    OCXmlWriterElementAttributeList list;
    for (int i = 0; i < 1000; ++i)
        list.addAttribute(L"a");
    const fault::HeapFault fault(1, fault::HeapFault::Following);
    list.destroy();
    EXPECT_EQ(0u, list.getCount());
}

TEST(OCXmlWriterElementAttributeList, StaysAsItWasWhenMemoryIsExhausted) {
    const OCWideString name = repeated(L'n', 200);
    const OCWideString value = repeated(L'v', 300);
    for (const unsigned int count : {0U, 1U, 63U, 64U, 128U}) {
        OCXmlWriterElementAttributeList list;
        for (unsigned int i = 0; i < count; ++i)
            list.addAttribute(L"a");
        const long blocks = fault::heapRecord().liveBlocks;
        // The attribute, its two texts, and at the end of a block the array.
        EXPECT_EQ(count % 64 == 0 ? 4u : 3u,
                  fault::failEachRequest([&] { list.addAttribute(name, value); },
                                         [&] {
                                             EXPECT_EQ(count, list.getCount());
                                             EXPECT_EQ(blocks, fault::heapRecord().liveBlocks);
                                         }));
        EXPECT_EQ(count + 1, list.getCount());
        EXPECT_EQ(value, list.getAttribute(count).getValue());
        EXPECT_EQ(1u, fault::failEachRequest([&] { list.makeText(); }));
    }
}

// The stack of open elements

TEST(OCXmlWriterElementStack, GivesTheLastNameFirst) {
    OCXmlWriterElementStack stack;
    EXPECT_TRUE(stack.isEmpty());
    OCWideString name(L"a");
    stack.push(name);
    name = L"changed";
    stack.push(L"b");
    EXPECT_FALSE(stack.isEmpty());
    EXPECT_EQ(OCWideString(L"b"), stack.pop());
    stack.push(repeated(L'c', 300));
    EXPECT_EQ(repeated(L'c', 300), stack.pop());
    EXPECT_EQ(OCWideString(L"a"), stack.pop());
    EXPECT_TRUE(stack.isEmpty());
}

TEST(OCXmlWriterElementStack, RefusesToGiveMoreThanItHas) {
    OCXmlWriterElementStack stack;
    EXPECT_EXCEPTION(stack.pop(), OXStack_UnderflowError, "Stack underflow");
    stack.push(L"a");
    stack.pop();
    EXPECT_EXCEPTION(stack.pop(), OXStack_UnderflowError, "Stack underflow");
    stack.push(L"b");
    EXPECT_EQ(OCWideString(L"b"), stack.pop());
}

TEST(OCXmlWriterElementStack, ForgetsAllNames) {
    const long left = fault::blocksLeftBy([] {
        OCXmlWriterElementStack stack;
        stack.clear();
        for (int i = 0; i < 1000; ++i)
            stack.push(repeated(L'x', 200));
        const long blocks = fault::heapRecord().liveBlocks;
        {
            const fault::HeapFault fault(1, fault::HeapFault::Following);
            stack.clear();
        }
        EXPECT_EQ(blocks - 2001, fault::heapRecord().liveBlocks);
        EXPECT_TRUE(stack.isEmpty());
        EXPECT_EXCEPTION(stack.pop(), OXStack_UnderflowError, "Stack underflow");
        stack.push(L"again");
        EXPECT_EQ(OCWideString(L"again"), stack.pop());
        stack.push(repeated(L'x', 200)); // for the destructor
    });
    EXPECT_EQ(0, left);
}

TEST(OCXmlWriterElementStack, StaysAsItWasWhenMemoryIsExhausted) {
    const OCWideString name = repeated(L'n', 200);
    for (const int count : {0, 1, 63, 64, 128}) {
        OCXmlWriterElementStack stack;
        for (int i = 0; i < count; ++i)
            stack.push(L"a");
        const long blocks = fault::heapRecord().liveBlocks;
        EXPECT_EQ(count % 64 == 0 ? 3u : 2u,
                  fault::failEachRequest([&] { stack.push(name); },
                                         [&] {
                                             EXPECT_EQ(count == 0, stack.isEmpty());
                                             EXPECT_EQ(blocks, fault::heapRecord().liveBlocks);
                                         }));
        if (count == 64 || count == 128) {
            const fault::HeapFault fault(1); // the array does not get smaller
            EXPECT_THROW(stack.pop(), OXMemory_AllocationError);
        }
        EXPECT_EQ(name, stack.pop());
        for (int i = 0; i < count; ++i)
            EXPECT_EQ(OCWideString(L"a"), stack.pop());
        EXPECT_TRUE(stack.isEmpty());
    }
}

// The writer

/// A writer over a recording stream.
struct Fixture {
    explicit Fixture(OEXmlEncoding encoding = XmlEncodingAnsi)
        : output(stream, encoding), writer(output) {}

    RecordingStream stream;
    OCXmlWriterOutput output;
    OCXmlWriter writer;
};

TEST(OCXmlWriter, WritesALineForEachTag) {
    Fixture f;
    f.writer.xmlDeclaration();
    f.writer.startElement(L"a");
    f.writer.characterData(L"x");
    f.writer.emptyElement(L"b");
    f.writer.closeElements();
    EXPECT_EQ("<?xml version=\"1.0\"?>\r\n"
              "<a>\r\n"
              "  x\r\n"
              "  <b/>\r\n"
              "</a>\r\n",
              f.stream.data);
    EXPECT_EQ(
        Calls({"write 23 -> 23", "write 5 -> 5", "write 5 -> 5", "write 8 -> 8", "write 6 -> 6"}),
        f.stream.takeCalls());
}

TEST(OCXmlWriter, WritesTheSameLinesWithoutIndentation) {
    Fixture f;
    f.output.setIndent(false);
    f.writer.xmlDeclaration();
    f.writer.startElement(L"a");
    f.writer.characterData(L"x");
    f.writer.emptyElement(L"b");
    f.writer.closeElements();
    EXPECT_EQ("<?xml version=\"1.0\"?>\r\n<a>\r\nx\r\n<b/>\r\n</a>\r\n", f.stream.data);
}

TEST(OCXmlWriter, IndentsNothingFromWhereIndentationIsTurnedOff) {
    Fixture f;
    f.writer.startElement(L"a");
    f.writer.startElement(L"b");
    f.writer.startElement(L"c");
    f.output.setIndent(false);
    f.writer.characterData(L"x\ny");
    f.writer.startElement(L"d");
    f.writer.endElement();
    f.writer.emptyElement(L"e");
    f.writer.endElement();
    f.output.setIndent(true); // still at the depth of what is in "c"
    f.writer.endElement();
    f.writer.endElement();
    EXPECT_EQ("<a>\r\n"
              "  <b>\r\n"
              "    <c>\r\n"
              "x\r\n"
              "y\r\n"
              "<d>\r\n"
              "</d>\r\n"
              "<e/>\r\n"
              "</c>\r\n"
              "    </b>\r\n"
              "  </a>\r\n",
              f.stream.data);
}

TEST(OCXmlWriter, WritesWideCharacters) {
    Fixture f(XmlEncodingWide);
    f.writer.startElement(L"a");
    EXPECT_EQ(20u, f.stream.data.size());
    f.writer.endElement();
    EXPECT_EQ(bytesOf(L"<a>\r\n</a>\r\n"), f.stream.data);
    // The declaration names no encoding here, either.
    Fixture declared(XmlEncodingWide);
    declared.writer.xmlDeclaration();
    EXPECT_EQ(bytesOf(L"<?xml version=\"1.0\"?>\r\n"), declared.stream.data);
}

TEST(OCXmlWriter, WritesAttributesInEveryTag) {
    Fixture f;
    OCXmlWriterElementAttributeList attributes;
    attributes.addAttribute(L"k", L"1 & 2");
    attributes.addAttribute(L"bare");
    f.writer.processingInstruction(L"target", attributes);
    f.writer.startElement(L"a", attributes);
    f.writer.emptyElement(L"b", attributes);
    f.writer.endElement();
    const OCXmlWriterElementAttributeList none;
    f.writer.processingInstruction(L"target", none);
    f.writer.startElement(L"a", none);
    f.writer.emptyElement(L"b", none);
    f.writer.endElement();
    EXPECT_EQ("<?target k=\"1 & 2\" bare?>\r\n"
              "<a k=\"1 & 2\" bare>\r\n"
              "  <b k=\"1 & 2\" bare/>\r\n"
              "</a>\r\n"
              "<?target?>\r\n"
              "<a>\r\n"
              "  <b/>\r\n"
              "</a>\r\n",
              f.stream.data);
    EXPECT_EQ(2u, attributes.getCount());
}

TEST(OCXmlWriter, WritesEmptyNamesAsTheyAre) {
    Fixture f;
    f.writer.processingInstruction(L"", OCXmlWriterElementAttributeList());
    f.writer.startElement(L"");
    f.writer.emptyElement(L"");
    f.writer.endElement();
    EXPECT_EQ("<?\?>\r\n<>\r\n  </>\r\n</>\r\n", f.stream.data);
    EXPECT_TRUE(f.writer.getElementStack().isEmpty());
}

TEST(OCXmlWriter, EscapesNothing) {
    Fixture f;
    OCXmlWriterElementAttributeList attributes;
    attributes.addAttribute(L"<&\"", L"<&\">'");
    f.writer.startElement(L"<&>", attributes);
    f.writer.characterData(L"<a>&\"']]>");
    f.writer.endElement();
    EXPECT_EQ("<<&> <&\"=\"<&\">'\">\r\n  <a>&\"']]>\r\n</<&>>\r\n", f.stream.data);
}

TEST(OCXmlWriter, IndentsEveryLineOfATextToTheDepth) {
    Fixture f;
    f.writer.startElement(L"a");
    f.writer.startElement(L"b");
    f.stream.data.clear();
    f.stream.position = 0;
    f.writer.characterData(L"p\nq\r\n");
    EXPECT_EQ("    p\r\n    q\r\n", f.stream.data);
    f.stream.takeCalls();
    f.writer.characterData(L"");
    EXPECT_EQ(Calls(), f.stream.takeCalls());
}

TEST(OCXmlWriter, CutsTagsAtLineBreaksLikeOtherTexts) {
    Fixture f;
    f.writer.startElement(L"a");
    OCXmlWriterElementAttributeList attributes;
    attributes.addAttribute(L"k", L"1\n2");
    f.writer.startElement(L"b\r", attributes);
    f.writer.endElement();
    EXPECT_EQ("<a>\r\n  <b\r\n   k=\"1\r\n  2\">\r\n  </b\r\n  >\r\n", f.stream.data);
}

TEST(OCXmlWriter, NestsElements) {
    Fixture f;
    EXPECT_TRUE(f.writer.getElementStack().isEmpty());
    f.writer.startElement(L"a");
    f.writer.startElement(L"b");
    f.writer.startElement(L"c");
    EXPECT_FALSE(f.writer.getElementStack().isEmpty());
    f.writer.endElement();
    f.writer.startElement(L"d");
    f.writer.closeElements();
    EXPECT_TRUE(f.writer.getElementStack().isEmpty());
    f.writer.closeElements();
    f.writer.emptyElement(L"e");
    EXPECT_EQ("<a>\r\n"
              "  <b>\r\n"
              "    <c>\r\n"
              "    </c>\r\n"
              "    <d>\r\n"
              "    </d>\r\n"
              "  </b>\r\n"
              "</a>\r\n"
              "<e/>\r\n",
              f.stream.data);
}

TEST(OCXmlWriter, TakesTheNamesOfEndTagsFromItsStack) {
    Fixture f;
    f.writer.startElement(L"a");
    f.writer.getElementStack().push(L"other");
    f.writer.endElement();
    EXPECT_EQ("<a>\r\n</other>\r\n", f.stream.data);
    EXPECT_EQ(OCWideString(L"a"), f.writer.getElementStack().pop());
    f.writer.getElementStack().push(L"b");
    f.writer.endElement(); // at depth 0 already
    EXPECT_EQ("<a>\r\n</other>\r\n</b>\r\n", f.stream.data);
}

TEST(OCXmlWriter, RefusesToCloseWhatIsNotOpen) {
    Fixture f;
    f.output.indent();
    EXPECT_EXCEPTION(f.writer.endElement(), OXStack_UnderflowError, "Stack underflow");
    EXPECT_EQ(Calls(), f.stream.takeCalls());
    f.writer.emptyElement(L"a"); // the depth is as it was
    EXPECT_EQ("  <a/>\r\n", f.stream.data);
}

TEST(OCXmlWriter, ClosesNoElementsWhenDestroyed) {
    QuietStream stream;
    const long left = fault::blocksLeftBy([&] {
        OCXmlWriterOutput output(stream, XmlEncodingAnsi);
        OCXmlWriter writer(output);
        writer.startElement(repeated(L'a', 300));
        writer.startElement(L"b");
    });
    EXPECT_EQ(2u, stream.writes);
    EXPECT_EQ("<" + std::string(300, 'a') + ">\r\n  <b>\r\n", stream.text);
    EXPECT_EQ(0, left);
}

TEST(OCXmlWriter, SharesAnOutputWithItsDepth) {
    RecordingStream stream;
    OCXmlWriterOutput output(stream, XmlEncodingAnsi);
    OCXmlWriter outer(output);
    outer.startElement(L"a");
    {
        OCXmlWriter inner(output);
        inner.emptyElement(L"b");
        EXPECT_TRUE(inner.getElementStack().isEmpty());
    }
    outer.endElement();
    EXPECT_EQ("<a>\r\n  <b/>\r\n</a>\r\n", stream.data);
}

TEST(OCXmlWriter, GivesAccessToItsParts) {
    Fixture f;
    const OCXmlWriter& constant = f.writer;
    EXPECT_EQ(&f.output, &f.writer.getOutput());
    EXPECT_EQ(&f.output, &constant.getOutput());
    EXPECT_EQ(&f.writer.getElementStack(), &constant.getElementStack());
}

TEST(OCXmlWriter, HoldsItsStackAndThenItsOutput) {
    Fixture f;
    void* fields[3];
    std::memcpy(fields, static_cast<void*>(&f.writer), sizeof fields);
    EXPECT_EQ(&f.writer.getElementStack(), fields[1]);
    EXPECT_EQ(&f.output, fields[2]);
}

TEST(OCXmlWriter, CountsAnElementAsOpenWhoseStartTheStreamRefuses) {
    Fixture f;
    f.writer.startElement(L"a");
    f.stream.writes = {{2, 2, RecordingStream::Outcome::Refuse}};
    EXPECT_EXCEPTION(f.writer.startElement(L"b"), OXStream_WriteError,
                     "Writing to the stream failed");
    f.writer.emptyElement(L"c"); // at the depth of before
    f.writer.closeElements();
    EXPECT_EQ("<a>\r\n  <c/>\r\n</b>\r\n</a>\r\n", f.stream.data);
}

TEST(OCXmlWriter, ClosesAnElementWhoseEndTheStreamRefuses) {
    Fixture f;
    f.writer.startElement(L"a");
    f.writer.startElement(L"b");
    f.stream.writes = {{3, 3, RecordingStream::Outcome::Throw}};
    EXPECT_THROW(f.writer.endElement(), RecordingStream::Error);
    f.writer.emptyElement(L"c");
    f.stream.writes = {{5, 5, RecordingStream::Outcome::Refuse}};
    EXPECT_EXCEPTION(f.writer.closeElements(), OXStream_WriteError, "Writing to the stream failed");
    EXPECT_TRUE(f.writer.getElementStack().isEmpty());
    EXPECT_EQ("<a>\r\n  <b>\r\n  <c/>\r\n", f.stream.data);
}

TEST(OCXmlWriter, PassesOnWhatTheStreamThrows) {
    Fixture f;
    f.stream.writes = {{1, 4, RecordingStream::Outcome::Throw}};
    EXPECT_THROW(f.writer.xmlDeclaration(), RecordingStream::Error);
    EXPECT_THROW(f.writer.emptyElement(L"a"), RecordingStream::Error);
    EXPECT_THROW(f.writer.characterData(L"a"), RecordingStream::Error);
    const OCXmlWriterElementAttributeList none;
    EXPECT_THROW(f.writer.processingInstruction(L"a", none), RecordingStream::Error);
    EXPECT_EQ("", f.stream.data);
}

TEST(OCXmlWriter, IsNotMadeWhenMemoryIsExhausted) {
    RecordingStream stream;
    OCXmlWriterOutput output(stream, XmlEncodingAnsi);
    EXPECT_EQ(0, fault::blocksLeftBy([&] {
                  EXPECT_EQ(1u, fault::failEachRequest([&] { const OCXmlWriter writer(output); }));
              }));
}

/// Runs an operation with each heap request failing once: then nothing is written, and the writer
/// goes on as if it had not been called.
void expectStrong(int depth, void (*operation)(OCXmlWriter&), unsigned long failures,
                  const std::string& expected) {
    SCOPED_TRACE(expected.substr(0, 200));
    for (const OEXmlEncoding encoding : {XmlEncodingAnsi, XmlEncodingWide}) {
        QuietStream stream;
        OCXmlWriterOutput output(stream, encoding);
        OCXmlWriter writer(output);
        for (int i = 0; i < depth; ++i)
            writer.startElement(L"e");
        stream.writes = 0;
        stream.text.clear();
        const long blocks = fault::heapRecord().liveBlocks;
        const unsigned long failed =
            fault::failEachRequest([&] { operation(writer); },
                                   [&] {
                                       EXPECT_EQ(0u, stream.writes);
                                       EXPECT_EQ(blocks, fault::heapRecord().liveBlocks);
                                   });
        EXPECT_LE(failures, failed);
        writer.closeElements();
        if (encoding == XmlEncodingAnsi)
            EXPECT_EQ(expected, stream.text);
        else
            EXPECT_EQ(expected.size() * sizeof(wchar_t), stream.text.size());
    }
}

std::string closing(int depth) {
    std::string text;
    for (; depth > 0; --depth)
        text += std::string(2 * static_cast<unsigned long>(depth - 1), ' ') + "</e>\r\n";
    return text;
}

TEST(OCXmlWriter, StaysAsItWasWhenMemoryIsExhausted) {
    const std::string name(1500, 'n');
    // At 63 the indentation is about to need the heap, at 64 the stack of names a larger block.
    for (const int depth : {0, 1, 63, 64, 128}) {
        const std::string spaces(2 * static_cast<unsigned long>(depth), ' ');
        expectStrong(
            depth, [](OCXmlWriter& writer) { writer.startElement(repeated(L'n', 1500)); },
            depth == 64 || depth == 128 ? 5 : 4,
            spaces + "<" + name + ">\r\n" + spaces + "</" + name + ">\r\n" + closing(depth));
        expectStrong(
            depth, [](OCXmlWriter& writer) { writer.emptyElement(repeated(L'n', 1500)); }, 2,
            spaces + "<" + name + "/>\r\n" + closing(depth));
        expectStrong(
            depth, [](OCXmlWriter& writer) { writer.characterData(repeated(L'n', 1500)); }, 1,
            spaces + name + "\r\n" + closing(depth));
        expectStrong(
            depth, [](OCXmlWriter& writer) { writer.xmlDeclaration(); }, 2,
            spaces + "<?xml version=\"1.0\"?>\r\n" + closing(depth));
    }
}

TEST(OCXmlWriter, KeepsAnElementOpenWhenMemoryIsExhausted) {
    for (const int depth : {1, 64, 65, 129}) {
        QuietStream stream;
        OCXmlWriterOutput output(stream, XmlEncodingAnsi);
        OCXmlWriter writer(output);
        for (int i = 1; i < depth; ++i)
            writer.startElement(L"e");
        writer.startElement(repeated(L'n', 1500));
        stream.writes = 0;
        stream.text.clear();
        // At 65 and 129 the stack of names gives a block back.
        EXPECT_EQ(depth % 64 == 1 && depth > 1 ? 3u : 2u,
                  fault::failEachRequest([&] { writer.endElement(); },
                                         [&] { EXPECT_EQ(0u, stream.writes); }));
        writer.closeElements();
        const unsigned long outer = static_cast<unsigned long>(depth) - 1;
        EXPECT_EQ(std::string(2 * outer, ' ') + "</" + std::string(1500, 'n') + ">\r\n" +
                      closing(depth - 1),
                  stream.text);
    }
}

TEST(OCXmlWriter, CanBeInitializedAgain) {
    RecordingStream stream;
    stream.recording = false;
    OCXmlWriterOutput output(stream, XmlEncodingAnsi);
    const long left = fault::blocksLeftBy([&] {
        OCXmlWriter writer(output);
        writer.getElementStack().push(L"a");
        writer.initialize();
        EXPECT_TRUE(writer.getElementStack().isEmpty());
        writer.getElementStack().push(L"b");
        fault::failEachRequest([&] { writer.initialize(); },
                               [&] { EXPECT_FALSE(writer.getElementStack().isEmpty()); });
        writer.destroy();
        writer.destroy();
        writer.initialize();
        EXPECT_TRUE(writer.getElementStack().isEmpty());
        writer.destroyElementStack();
        writer.initializeElementStack();
        EXPECT_TRUE(writer.getElementStack().isEmpty());
    });
    EXPECT_EQ(0, left);
}

TEST(OCXmlWriter, WritesToAMemoryStream) {
    OCMemoryStream stream;
    OCXmlWriterOutput output(stream, XmlEncodingAnsi);
    OCXmlWriter writer(output);
    writer.startElement(L"list");
    writer.characterData(L"milk\nbread");
    writer.emptyElement(L"end");
    writer.closeElements();
    EXPECT_EQ(OCAnsiString("<list>\r\n  milk\r\n  bread\r\n  <end/>\r\n</list>\r\n"),
              stream.makeString());
}

} // namespace
