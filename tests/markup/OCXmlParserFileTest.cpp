// Documents in files: the stream that the parser opens by itself.

#include "OCFilePath.h"
#include "OCFileStream.h"
#include "OCXmlParser.h"
#include "support/Exceptions.h"
#include "support/FaultInjection.h"
#include "support/FileCalls.h"
#include "support/ScratchDirectory.h"
#include "support/XmlModel.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <utility>
#include <vector>

namespace {

using xmlmodel::Interruption;
using xmlmodel::Log;
using xmlmodel::logged;
using xmlmodel::LoggingEvents;

Log events(const std::string& path) {
    Log log;
    LoggingEvents receiver(log);
    OCXmlParser parser;
    parser.setEvents(receiver);
    logged(log, [&] { parser.parse(OCFilePath(path.c_str())); });
    return log;
}

/// What a parse over an ordinary stream of the same file reports.
Log eventsOfStream(const std::string& path) {
    Log log;
    LoggingEvents receiver(log);
    OCXmlParser parser;
    parser.setEvents(receiver);
    logged(log, [&] {
        OCFileStream stream(OCFilePath(path.c_str()), FileCreateModeRead, FileShareModeRead);
        parser.parse(stream);
    });
    return log;
}

std::string manyElements(unsigned long count) {
    std::string document = "<list>";
    for (unsigned long i = 0; i < count; ++i)
        document += "<item n='" + std::to_string(i) + "'/>";
    return document + "</list>";
}

TEST(OCXmlParserFile, ReportsTheEventsOfAFile) {
    const ScratchDirectory scratch;
    EXPECT_EQ((Log{"documentStart", "elementStart a", "attribute x=1", "text t", "elementEnd",
                   "documentEnd"}),
              events(scratch.write("a.xml", "<a x='1'>t</a>\n")));
    const std::string large = scratch.write("large.xml", manyElements(20000));
    const Log log = events(large);
    EXPECT_EQ(2 + 2 + 3 * 20000u, log.size());
    EXPECT_EQ(eventsOfStream(large), log);
}

TEST(OCXmlParserFile, OpensTheFileForReading) {
    const ScratchDirectory scratch;
    const std::string path = scratch.write("a.xml", "<a/>");
    int flags = -1;
    const Replacement opened(calls::open, [&](const char* name, int given, mode_t mode) {
        flags = given;
        return calls::open.original(name, given, mode);
    });
    EXPECT_EQ("documentEnd", events(path).back());
    EXPECT_EQ(O_RDONLY, flags);
}

TEST(OCXmlParserFile, ClosesTheFile) {
    const ScratchDirectory scratch;
    const std::string good = scratch.write("good.xml", "<a/>");
    const std::string bad = scratch.write("bad.xml", "<a>");
    const long before = openDescriptors();
    EXPECT_EQ("documentEnd", events(good).back());
    EXPECT_EQ(before, openDescriptors());
    EXPECT_EQ("thrown OXXmlParser_ContentMalformed: Malformed XML content", events(bad).back());
    EXPECT_EQ(before, openDescriptors());
    OCXmlParser parser;
    Log log;
    LoggingEvents receiver(log);
    receiver.failingEvent = 1;
    parser.setEvents(receiver);
    EXPECT_THROW(parser.parse(OCFilePath(good.c_str())), Interruption);
    EXPECT_EQ(before, openDescriptors());
}

TEST(OCXmlParserFile, NamesTheSystemsReasonForAMissingFile) {
    const ScratchDirectory scratch;
    OCXmlParser parser;
    EXPECT_EXCEPTION(parser.parse(OCFilePath(scratch.file("missing.xml").c_str())),
                     OXFileStream_CreateError,
                     "Can not create the file stream (No such file or directory)");
    EXPECT_EQ(
        Log{"thrown OXFileStream_CreateError: Can not create the file stream (No such file or "
            "directory)"},
        events(scratch.file("missing.xml")));
}

TEST(OCXmlParserFile, CannotReadADirectory) {
    const ScratchDirectory scratch;
    EXPECT_EQ((Log{"documentStart",
                   "thrown OXHandleStream_ReadError: Can not read from file stream (Is a "
                   "directory)"}),
              events(scratch.path));
}

TEST(OCXmlParserFile, ReadsAheadInLargeBlocks) {
    const ScratchDirectory scratch;
    const std::string document = manyElements(50000);
    const std::string path = scratch.write("large.xml", document);
    const Counting reads(calls::read);
    EXPECT_EQ("documentEnd", events(path).back());
    EXPECT_LE(reads.calls(), document.size() / 65536 + 3);
}

TEST(OCXmlParserFile, DeliversEverythingThatComesBeforeAReadThatFails) {
    const ScratchDirectory scratch;
    const std::string document = manyElements(20000);
    const std::string path = scratch.write("large.xml", document);
    for (unsigned long failing = 1; failing <= 3; ++failing) {
        const Log log = [&] {
            const Failing reads(calls::read, EIO, failing);
            return events(path);
        }();
        EXPECT_EQ("thrown OXHandleStream_ReadError: Can not read from file stream (Input/output "
                  "error)",
                  log.back());
        // The same events as of a stream that ends there: what the last batch of 128 has of it is
        // lost with the read that failed.
        const unsigned long readable = (failing - 1) * 65536;
        Log expected;
        LoggingEvents receiver(expected);
        OCXmlParser parser;
        parser.setEvents(receiver);
        xmlmodel::LoggingStream stream(document.substr(0, readable));
        stream.failingCall = readable / 128;
        EXPECT_THROW(parser.parse(stream), Interruption);
        EXPECT_EQ(expected, Log(log.begin(), log.end() - 1)) << failing;
        EXPECT_LE((failing - 1) * 9000, log.size());
    }
}

TEST(OCXmlParserFile, LetsAnInterruptedReadThrough) {
    const ScratchDirectory scratch;
    const std::string path = scratch.write("a.xml", "<a/>");
    const Failing reads(calls::read, EINTR, 1, 1);
    EXPECT_EQ(
        (Log{"documentStart", "thrown OXHandleStream_ReadError: Can not read from file stream "
                              "(Interrupted system call)"}),
        events(path));
}

TEST(OCXmlParserFile, TakesShortReadsAsTheyCome) {
    const ScratchDirectory scratch;
    const std::string path = scratch.write("a.xml", manyElements(300));
    const Log expected = events(path);
    for (const size_t portion : {1ul, 7ul, 127ul, 128ul, 129ul, 1000ul}) {
        const Replacement reads(calls::read, [=](int handle, void* buffer, size_t count) {
            return calls::read.original(handle, buffer, count < portion ? count : portion);
        });
        EXPECT_EQ(expected, events(path)) << portion;
    }
}

TEST(OCXmlParserFile, AsksTheFileForItsPositionAndSize) {
    // The declaration ends where the first batch of 128 ends, so the parser has to ask.
    const ScratchDirectory scratch;
    const std::string document = "<?xml" + std::string(121, ' ') + "?>" + manyElements(6000);
    const std::string path = scratch.write("a.xml", document);
    std::vector<std::pair<off_t, int>> seeks;
    const Log expected = eventsOfStream(path);
    {
        const Replacement asked(calls::lseek, [&](int handle, off_t offset, int origin) {
            seeks.emplace_back(offset, origin);
            return calls::lseek.original(handle, offset, origin);
        });
        EXPECT_EQ(expected, events(path));
    }
    // At the declaration's end, and at the end of the document.
    const std::pair<off_t, int> position(0, SEEK_CUR);
    const std::pair<off_t, int> size(0, SEEK_END);
    const auto end = static_cast<off_t>(document.size());
    EXPECT_EQ(
        (std::vector<std::pair<off_t, int>>{
            position, position, size, {128, SEEK_SET}, position, position, size, {end, SEEK_SET}}),
        seeks);
}

TEST(OCXmlParserFile, ReportsTheSameEventsBeforeAQueryThatFails) {
    const ScratchDirectory scratch;
    const std::string path =
        scratch.write("a.xml", "<?xml" + std::string(121, ' ') + "?>" + manyElements(60));
    for (unsigned long failing = 1; failing <= 8; ++failing) {
        const auto run = [&](Log (*parse)(const std::string&)) {
            const Failing seeks(calls::lseek, EOVERFLOW, failing, 1);
            return parse(path);
        };
        const Log log = run(events);
        EXPECT_EQ(run(eventsOfStream), log);
        EXPECT_EQ("thrown OXHandleStream_SeekError: Can not move to the specified file stream "
                  "position (Value too large for defined data type)",
                  log.back());
        EXPECT_EQ(failing > 4 ? 1 + 2 + 3 * 60 + 1u : 2u, log.size());
    }
}

TEST(OCXmlParserFile, CannotFinishADocumentFromAPipe) {
    const ScratchDirectory scratch;
    const std::string path = scratch.file("pipe");
    ASSERT_EQ(0, mkfifo(path.c_str(), 0600));
    std::thread writer([&] {
        OCFileStream stream(OCFilePath(path.c_str()), FileCreateModeWrite, FileShareModeRead);
        stream.writeBuffer("<a>t</a>", 8);
    });
    const Log log = events(path);
    writer.join();
    EXPECT_EQ((Log{"documentStart", "elementStart a", "text t", "elementEnd",
                   "thrown OXHandleStream_SeekError: Can not move to the specified file stream "
                   "position (Illegal seek)"}),
              log);
}

TEST(OCXmlParserFile, ParsesAPipeThatIsNotAskedForItsSize) {
    // Something that is no markup follows, so that there is always a character to look at.
    const ScratchDirectory scratch;
    const std::string path = scratch.file("pipe");
    ASSERT_EQ(0, mkfifo(path.c_str(), 0600));
    std::thread writer([&] {
        OCFileStream stream(OCFilePath(path.c_str()), FileCreateModeWrite, FileShareModeRead);
        stream.writeBuffer("<a>t</a>.", 9);
    });
    const Log log = events(path);
    writer.join();
    EXPECT_EQ((Log{"documentStart", "elementStart a", "text t", "elementEnd", "documentEnd"}), log);
}

TEST(OCXmlParserFile, SurvivesRefusedMemory) {
    const ScratchDirectory scratch;
    const OCFilePath path(scratch.write("a.xml", "<a>" + std::string(5000, 't') + "</a>").c_str());
    const long descriptors = openDescriptors();
    OCXmlEvents receiver;
    OCXmlParser parser;
    parser.setEvents(receiver);
    EXPECT_EQ(0, fault::blocksLeftBy(
                     [&] { EXPECT_LE(3u, fault::failEachRequest([&] { parser.parse(path); })); }));
    EXPECT_EQ(descriptors, openDescriptors());
}

} // namespace
