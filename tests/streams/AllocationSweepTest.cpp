#include "support/AllocationSweep.h"

#include "OCBase64.h"
#include "OCFileStream.h"
#include "OCHandleStream.h"
#include "OCHexDump.h"
#include "OCMemoryBuffer.h"
#include "OCMemoryStream.h"
#include "OCStreamReader.h"
#include "OCStreamTransfer.h"
#include "OCStreamWriter.h"
#include "support/ScratchDirectory.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

using State = const std::string&;

const std::string bytes(10000, 'b');
const OCAnsiString longText(std::string(300, 's').c_str());

std::string seenStream(OCMemoryStream& stream) {
    const OCAnsiString text = stream.getSize() == 0 ? OCAnsiString() : stream.makeString();
    return std::to_string(stream.getPosition()) + '/' + std::to_string(stream.getCapacity()) + ':' +
           text.getString();
}

auto memoryStreams() {
    return sweep::Operations(
        [] {
            auto made = std::make_unique<OCMemoryStream>("before", 6UL);
            made->setPosition(3);
            return made;
        },
        seenStream);
}

TEST(AllocationSweep, MemoryStream) {
    const auto make = sweep::results();
    make("construction", [](auto&) { OCMemoryStream made; });
    make("of a size", [](auto&) { OCMemoryStream made(10000); });
    make("of bytes", [](auto&) { OCMemoryStream(bytes.data(), 10000); });
    make("new", [](auto&) { delete new OCMemoryStream; });
    make.managing("of no bytes", [](auto&) {
        sweep::refused<OXMemoryBuffer_NullPointer>([] { OCMemoryStream(nullptr, 1); });
    });
    make("makeBuffer of nothing", [](auto&) {
        sweep::refused<OXMemoryStream_NoData>([] { OCMemoryStream().makeBuffer(); });
    });
    make("makeString of nothing", [](auto&) {
        sweep::refused<OXMemoryStream_NoData>([] { OCMemoryStream().makeString(); });
    });
    const auto stream = memoryStreams();
    stream("setSize", [](OCMemoryStream& s) {
        s.setSize(20000);
        s.writeBuffer(bytes.data(), 10000);
        s.setSize(10003);
    });
    stream("write", [](OCMemoryStream& s) {
        unsigned long count = 10000;
        EXPECT_TRUE(s.write(bytes.data(), count));
    });
    stream("writeBuffer", [](OCMemoryStream& s) { s.writeBuffer(bytes.data(), 10000); });
    const sweep::Operations large(
        [] { return std::make_unique<OCMemoryStream>(bytes.data(), 10000UL); }, seenStream);
    large("makeBuffer", [](OCMemoryStream& s) { EXPECT_EQ(10000UL, s.makeBuffer().getSize()); });
    large("makeString", [](OCMemoryStream& s) { EXPECT_EQ(10000UL, s.makeString().getLength()); });
    large.managing("readBuffer of too much", [](OCMemoryStream& s) {
        char buffer[16];
        s.setPosition(9999);
        sweep::refused<OXStream_ReadError>([&] { s.readBuffer(buffer, 16); });
    });
}

TEST(AllocationSweep, NullStream) {
    const sweep::Operations null([] { return std::make_unique<OCNullStream>(); },
                                 [](OCNullStream&) { return std::string(); });
    null("new", [](auto&) { delete new OCNullStream; });
    null.managing("readBuffer", [](OCStream& s) {
        char c;
        sweep::refused<OXStream_ReadError>([&] { s.readBuffer(&c, 1); });
    });
}

TEST(AllocationSweep, ReaderAndWriter) {
    OCMemoryStream source(bytes.data(), 10000);
    const auto make = sweep::results();
    make("reader", [&](auto&) { OCStreamReader made(source); });
    make("new reader", [&](auto&) { delete new OCStreamReader(source); });
    make("writer", [&](auto&) { OCStreamWriter made(source); });
    make("new writer", [&](auto&) { delete new OCStreamWriter(source); });
    // What a refused flush could not write stays in the writer, which tries again when it ends.
    struct Writing {
        Writing() : target(bytes.data(), 8192), writer(std::make_unique<OCStreamWriter>(target)) {
            target.setPosition(8192);
            for (int i = 0; i < 4095; ++i)
                writer->writeCharacter('w');
        }
        std::string result() {
            writer.reset();
            return seenStream(target);
        }
        OCMemoryStream target;
        std::unique_ptr<OCStreamWriter> writer;
        bool used = false;
    };
    const sweep::Operations writing(
        [] { return std::make_unique<Writing>(); },
        [](Writing& w) { return w.used ? w.result() : Writing().result(); });
    writing("flush", [](Writing& w) {
        w.used = true;
        w.writer->flush();
    });
    writing.leaving(
        "writeCharacter",
        [](Writing& w) {
            w.used = true;
            w.writer->writeCharacter('x');
        },
        [](State before, State after, State result) {
            EXPECT_TRUE(after == before || after == result);
        });
}

TEST(AllocationSweep, Transfer) {
    struct Transfer {
        Transfer() : source(bytes.data(), 10000), target("before", 6) {
            target.setPosition(6);
            transfer.useSource(source);
            transfer.useTarget(target);
        }
        OCMemoryStream source;
        OCMemoryStream target;
        OCStreamTransfer transfer;
    };
    const sweep::Operations transfer([] { return std::make_unique<Transfer>(); },
                                     [](Transfer& t) { return seenStream(t.target); });
    transfer("new", [](auto&) { delete new OCStreamTransfer; });
    transfer("execute", [](Transfer& t) {
        t.transfer.setBlockSize(20000);
        t.transfer.execute();
    });
    transfer.leaving(
        "execute in blocks",
        [](Transfer& t) {
            t.transfer.setBlockSize(1000);
            t.transfer.execute();
        },
        [](State before, State after, State) {
            const std::string text = after.substr(after.find(':'));
            EXPECT_EQ(before.substr(before.find(':')), text.substr(0, 7));
            EXPECT_EQ(1UL, text.size() % 1000 - 6);
        });
    transfer.managing("validateSource", [](auto&) {
        sweep::refused<OXStreamTransfer_UnassignedSource>(
            [] { OCStreamTransfer().validateSource(); });
    });
    transfer.managing("validateTarget", [](auto&) {
        sweep::refused<OXStreamTransfer_UnassignedTarget>(
            [] { OCStreamTransfer().validateTarget(); });
    });
}

TEST(AllocationSweep, HandleStream) {
    const sweep::Operations handle([] { return std::make_unique<OCHandleStream>(); },
                                   [](OCHandleStream& s) { return std::to_string(s.getHandle()); });
    char c = 'c';
    unsigned long one = 1;
    handle("new", [](auto&) { delete new OCHandleStream; });
    handle("read", [&](OCStream& s) {
        sweep::refused<OXHandleStream_ReadError>([&] { s.read(&c, one); });
    });
    handle("seek", [](OCStream& s) {
        sweep::refused<OXHandleStream_SeekError>([&] { s.seek(0, StreamSeekBeginning); });
    });
    handle("setSize",
           [](OCStream& s) { sweep::refused<OXHandleStream_SeekError>([&] { s.setSize(0); }); });
    handle("write", [&](OCStream& s) {
        sweep::refused<OXHandleStream_WriteError>([&] { s.write(&c, one); });
    });
}

TEST(AllocationSweep, FileStream) {
    const ScratchDirectory directory;
    const std::string name = "file-" + std::string(150, 'n');
    const OCFilePath path(directory.write(name, "content").c_str());
    const OCFilePath made(directory.file("made-" + std::string(150, 'n')).c_str());
    const OCFilePath nowhere(directory.file("no/" + name).c_str());
    const long descriptors = openDescriptors();
    const sweep::Operations files([] { return std::make_unique<sweep::Nothing>(); },
                                  [&](const auto&) {
                                      return directory.read(name) + '/' +
                                             std::to_string(openDescriptors() - descriptors);
                                  });
    files("construction",
          [&](auto&) { OCFileStream(path, FileCreateModeRead, FileShareModeRead); });
    files("new", [&](auto&) {
        delete new OCFileStream(path, FileCreateModeReadWrite, FileShareModeNone);
    });
    files("of a file that is made",
          [&](auto&) { OCFileStream(made, FileCreateModeCreate, FileShareModeNone); });
    files("of a file that is not there", [&](auto&) {
        sweep::refused<OXFileStream_CreateError>(
            [&] { OCFileStream(nowhere, FileCreateModeRead, FileShareModeRead); });
    });
    struct Closed {
        explicit Closed(const OCFilePath& path)
            : stream(path, FileCreateModeRead, FileShareModeRead) {
            stream.destroy();
        }
        OCFileStream stream;
    };
    const sweep::Operations closed([&] { return std::make_unique<Closed>(path); },
                                   [](Closed& c) { return std::to_string(c.stream.getHandle()); });
    closed("getTimeAccessed", [](Closed& c) {
        sweep::refused<OXFileStream_GetTimeError>([&] { c.stream.getTimeAccessed(); });
    });
    closed("getTimeModified", [](Closed& c) {
        sweep::refused<OXFileStream_GetTimeError>([&] { c.stream.getTimeModified(); });
    });
    closed("getTimeCreated", [](Closed& c) {
        sweep::refused<OXFileStream_GetTimeError>([&] { c.stream.getTimeCreated(); });
    });
    closed("lock", [](Closed& c) {
        OCFileStreamLock lock(c.stream);
        sweep::refused<OXFileStreamLock_AcquireError>([&] { lock.lock(0, 1); });
    });
    closed("lock in time", [](Closed& c) {
        OCFileStreamLock lock(c.stream);
        sweep::refused<OXFileStreamLock_AcquireError>([&] { lock.lock(0, 1, 10); });
    });
    closed("new lock", [](Closed& c) { delete new OCFileStreamLock(c.stream); });
}

TEST(AllocationSweep, Base64) {
    const std::string text(6000, 'A');
    OCMemoryStream binary(bytes.data(), 3000);
    OCMemoryStream encoded(text.data(), text.size());
    OCBase64Encoder encoder;
    OCBase64Decoder decoder;
    const auto make = sweep::results();
    make("new encoder", [](auto&) { delete new OCBase64Encoder; });
    make("new decoder", [](auto&) { delete new OCBase64Decoder; });
    make("encoder's reader", [&](auto&) { OCBase64EncoderReader made(binary); });
    make("encoder's writer", [&](auto&) { OCBase64EncoderWriter made(binary); });
    make("decoder's reader", [&](auto&) { OCBase64DecoderReader made(binary); });
    make("decoder's writer", [&](auto&) { OCBase64DecoderWriter made(binary); });
    // The writer writes when it is full and when it ends; what is refused at its end is dropped.
    OCMemoryStream lines;
    binary.setPosition(0);
    encoder.encode(binary, lines);
    OCMemoryStream octets;
    decoder.decode(encoded, octets);
    const auto target = [](OCMemoryStream& whole) {
        return sweep::Operations(
            [] {
                auto made = std::make_unique<OCMemoryStream>();
                made->setBlockSize(16);
                made->setSize(1);
                return made;
            },
            [&whole](OCMemoryStream& s) {
                const unsigned long size = s.getSize();
                EXPECT_TRUE(size == 1 ||
                            (size <= whole.getSize() &&
                             memoryCompare(s.makeBuffer().getData(), whole.makeBuffer().getData(),
                                           size) == CompareResultEqual));
                return std::string();
            });
    };
    target(lines)("encode", [&](OCMemoryStream& s) {
        binary.setPosition(0);
        encoder.encode(binary, s);
    });
    target(octets)("decode", [&](OCMemoryStream& s) {
        encoded.setPosition(0);
        decoder.decode(encoded, s);
    });
}

TEST(AllocationSweep, HexDump) {
    const sweep::Operations dump([] { return std::make_unique<OCHexDump>(); },
                                 [](const OCHexDump& d) {
                                     return sweep::seen(
                                         d.dumpMultipleLines("0123456789abcdefgh", 18));
                                 });
    dump("new", [](auto&) { delete new OCHexDump; });
    dump("dumpSingleLine", [](OCHexDump& d) { d.dumpSingleLine(bytes.data(), 1000); });
    dump("dumpMultipleLines", [](OCHexDump& d) { d.dumpMultipleLines(bytes.data(), 1000); });
    dump("setByteSeparator", [](OCHexDump& d) { d.setByteSeparator(longText); });
    dump("setLineSeparator", [](OCHexDump& d) { d.setLineSeparator(longText); });
}

} // namespace
