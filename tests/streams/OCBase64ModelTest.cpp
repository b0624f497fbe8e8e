// Whatever encode and decode do inside, the streams must see what they would see from the adapters
// block after block: the same calls on both streams in the same order, the same bytes and the same
// places when one of them fails.

#include "OCBase64.h"

#include "support/Base64Model.h"
#include "support/RecordingStream.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace {

using Outcome = RecordingStream::Outcome;
using Log = std::vector<std::string>;

/// A recording stream that writes into a log that it shares with another.
class LoggedStream : public RecordingStream {
public:
    LoggedStream(Log& sharedLog, std::string streamName, std::string content)
        : RecordingStream(std::move(content)), log(sharedLog), name(std::move(streamName)) {}

    bool read(void* buffer, unsigned long& count) override {
        const Moved moved(*this);
        return RecordingStream::read(buffer, count);
    }
    unsigned long seek(long offset, OEStreamSeek origin) override {
        const Moved moved(*this);
        return RecordingStream::seek(offset, origin);
    }
    bool write(const void* buffer, unsigned long& count) override {
        const Moved moved(*this);
        log.push_back(name + "offered " + std::string(static_cast<const char*>(buffer), count));
        return RecordingStream::write(buffer, count);
    }

private:
    struct Moved {
        explicit Moved(LoggedStream& owner) : stream(owner) {}
        ~Moved() {
            for (const std::string& call : stream.takeCalls())
                stream.log.push_back(stream.name + call);
        }
        LoggedStream& stream;
    };

    Log& log;
    std::string name;
};

void encodeByBlocks(OCStream& source, OCStream& target) {
    OCBase64EncoderReader reader(source);
    OCBase64EncoderWriter writer(target);
    const OCBase64Encoder encoder;
    char in[3];
    char out[4];
    while (const unsigned int count = reader.readBlock(in)) {
        if (count == 3)
            encoder.encode3(in, out);
        else if (count == 2)
            encoder.encode2(in, out);
        else
            encoder.encode1(in, out);
        writer.writeBlock(out);
    }
}

void decodeByBlocks(OCStream& source, OCStream& target) {
    OCBase64DecoderReader reader(source);
    OCBase64DecoderWriter writer(target);
    const OCBase64Decoder decoder;
    char in[4];
    char out[3];
    for (;;) {
        const unsigned int count = decoder.length(in, reader.readBlock(in));
        if (count < 2)
            return;
        if (count == 4)
            decoder.decode4(in, out);
        else if (count == 3)
            decoder.decode3(in, out);
        else
            decoder.decode2(in, out);
        writer.writeBlock(out, count - 1);
    }
}

void encodeAtOnce(OCStream& source, OCStream& target) {
    OCBase64Encoder().encode(source, target);
}

void decodeAtOnce(OCStream& source, OCStream& target) {
    OCBase64Decoder().decode(source, target);
}

using Coder = void (*)(OCStream&, OCStream&);

/// How the streams behave.
struct Conditions {
    std::string content;
    unsigned long position = 0;
    unsigned long sourceChunk = ~0UL;
    unsigned long targetChunk = ~0UL;
    std::vector<RecordingStream::Rule> reads;
    std::vector<RecordingStream::Rule> writes;
    bool seekThrows = false;
    bool sameStream = false;
};

struct Outcomes {
    Log log;
    std::string sourceData;
    std::string targetData;
    unsigned long sourcePosition = 0;
    std::string exception;
};

Outcomes run(Coder coder, const Conditions& conditions) {
    Outcomes outcomes;
    LoggedStream source(outcomes.log, "source ", conditions.content);
    source.position = conditions.position;
    source.chunk = conditions.sourceChunk;
    source.reads = conditions.reads;
    source.seekThrows = conditions.seekThrows;
    LoggedStream target(outcomes.log, "target ", "");
    LoggedStream& written = conditions.sameStream ? source : target;
    written.writes = conditions.writes;
    if (!conditions.sameStream)
        target.chunk = conditions.targetChunk;
    try {
        coder(source, written);
        outcomes.exception = "none";
    } catch (const OXStream_WriteError&) {
        outcomes.exception = "refused";
    } catch (const RecordingStream::Error&) {
        outcomes.exception = "thrown";
    }
    outcomes.sourceData = source.data;
    outcomes.targetData = target.data;
    outcomes.sourcePosition = source.position;
    return outcomes;
}

/// Compares, and returns what happened.
Outcomes expectSame(Coder byBlocks, Coder atOnce, const Conditions& conditions) {
    const Outcomes expected = run(byBlocks, conditions);
    Outcomes actual = run(atOnce, conditions);
    EXPECT_EQ(expected.exception, actual.exception);
    EXPECT_EQ(expected.sourcePosition, actual.sourcePosition);
    EXPECT_TRUE(expected.sourceData == actual.sourceData);
    EXPECT_TRUE(expected.targetData == actual.targetData);
    EXPECT_EQ(expected.log.size(), actual.log.size());
    for (unsigned long i = 0; i < expected.log.size() && i < actual.log.size(); ++i) {
        if (expected.log[i] != actual.log[i]) {
            ADD_FAILURE() << "call " << i << ":\n" << expected.log[i] << '\n' << actual.log[i];
            break;
        }
    }
    return actual;
}

std::string randomBytes(std::mt19937& random, unsigned long count) {
    std::string bytes(count, '\0');
    for (char& c : bytes)
        c = static_cast<char>(random());
    return bytes;
}

/// Base64 with anything from nothing to much in it that is no Base64.
std::string randomText(std::mt19937& random, unsigned long count) {
    std::string text;
    const unsigned long kind = random() % 6;
    if (kind == 0) // lines of another length, which need not be whole groups
        for (unsigned long width = 1 + random() % 90; text.size() < count;) {
            for (unsigned long i = 0; i < width; ++i)
                text += base64::alphabet()[random() % 64];
            text += random() % 2 == 0 ? "\n" : "\r\n";
        }
    else
        text = base64::encode(randomBytes(random, count * 3 / 4));
    text.resize(count);
    const unsigned int every = kind == 1 ? 5 : kind == 2 ? 60 : kind == 3 ? 3000 : 0;
    if (every > 0)
        for (char& c : text)
            if (random() % every == 0)
                c = "\r\n\t \x80\xff=-\0z"[random() % 10];
    return text;
}

std::vector<RecordingStream::Rule> randomRules(std::mt19937& random, bool mayFail) {
    std::vector<RecordingStream::Rule> rules;
    const unsigned long kind = random() % 4;
    if (kind == 0)
        return rules;
    for (unsigned long call = 1; call <= 60; ++call) {
        const unsigned long sizes[] = {1, 2, 3, 4, 5, 47, 48, 66, 1 + random() % 5000};
        if (kind == 1 || random() % 3 == 0)
            rules.push_back({call, call, Outcome::Normal, sizes[random() % 9]});
        if (mayFail && random() % 5 == 0)
            rules.push_back({call, call,
                             random() % 3 == 0   ? Outcome::Zero
                             : random() % 2 == 0 ? Outcome::Refuse
                                                 : Outcome::Throw});
    }
    return rules;
}

Conditions randomConditions(std::mt19937& random, std::string content) {
    Conditions conditions;
    conditions.content = std::move(content);
    const bool mayFail = random() % 2 == 0;
    conditions.reads = randomRules(random, mayFail);
    conditions.writes = randomRules(random, mayFail);
    if (random() % 3 == 0)
        conditions.position = random() % (conditions.content.size() + 1);
    if (random() % 4 == 0)
        conditions.sourceChunk = 1 + random() % 5000;
    if (random() % 4 == 0)
        conditions.targetChunk = 1 + random() % 5000;
    conditions.seekThrows = random() % 8 == 0;
    return conditions;
}

struct Tally {
    void count(const Outcomes& outcomes) {
        if (outcomes.exception == "none")
            ++whole;
        else
            ++failed;
        if (outcomes.log.size() > 12)
            ++busy;
    }
    int whole = 0;
    int failed = 0;
    int busy = 0;
};

TEST(OCBase64Model, EncodingLooksLikeBlockAfterBlock) {
    const unsigned int seed = 20280;
    std::mt19937 random(seed);
    Tally tally;
    for (int round = 0; round < 1500 && !testing::Test::HasFailure(); ++round) {
        SCOPED_TRACE("seed " + std::to_string(seed) + " round " + std::to_string(round));
        tally.count(expectSame(
            encodeByBlocks, encodeAtOnce,
            randomConditions(random, randomBytes(random, random() % (round % 8 ? 9000 : 40000)))));
    }
    // The conditions were of all kinds.
    EXPECT_GT(tally.whole, 300);
    EXPECT_GT(tally.failed, 200);
    EXPECT_GT(tally.busy, 300);
}

TEST(OCBase64Model, DecodingLooksLikeBlockAfterBlock) {
    const unsigned int seed = 20281;
    std::mt19937 random(seed);
    Tally tally;
    for (int round = 0; round < 2500 && !testing::Test::HasFailure(); ++round) {
        SCOPED_TRACE("seed " + std::to_string(seed) + " round " + std::to_string(round));
        tally.count(expectSame(
            decodeByBlocks, decodeAtOnce,
            randomConditions(random, randomText(random, random() % (round % 8 ? 12000 : 40000)))));
    }
    EXPECT_GT(tally.whole, 300);
    EXPECT_GT(tally.failed, 200);
    EXPECT_GT(tally.busy, 300);
}

TEST(OCBase64Model, EveryWriteMayFail) {
    std::mt19937 random(20282);
    const std::string bytes = randomBytes(random, 20000);
    const std::string text = base64::encode(bytes);
    for (const Outcome outcome : {Outcome::Refuse, Outcome::Throw, Outcome::Zero}) {
        for (unsigned long number = 1; number <= 8; ++number) {
            for (const unsigned long last : {number, number + 1, 99UL}) {
                Conditions conditions;
                conditions.content = bytes;
                conditions.writes = {{number, last, outcome}};
                expectSame(encodeByBlocks, encodeAtOnce, conditions);
                conditions.targetChunk = 1000;
                expectSame(encodeByBlocks, encodeAtOnce, conditions);
                conditions.content = text;
                expectSame(decodeByBlocks, decodeAtOnce, conditions);
                conditions.targetChunk = ~0UL;
                expectSame(decodeByBlocks, decodeAtOnce, conditions);
            }
        }
    }
}

TEST(OCBase64Model, EveryReadMayFailOrEnd) {
    std::mt19937 random(20283);
    const std::string bytes = randomBytes(random, 20000);
    const std::string text = base64::encode(bytes);
    for (const Outcome outcome : {Outcome::Refuse, Outcome::Throw, Outcome::Zero}) {
        for (const unsigned long chunk : {~0UL, 4095UL, 3000UL, 1001UL}) {
            for (unsigned long number = 1; number <= 30; ++number) {
                Conditions conditions;
                conditions.content = bytes;
                conditions.sourceChunk = chunk;
                conditions.reads = {{number, number, outcome}};
                expectSame(encodeByBlocks, encodeAtOnce, conditions);
                conditions.content = text;
                expectSame(decodeByBlocks, decodeAtOnce, conditions);
            }
        }
    }
}

TEST(OCBase64Model, LineEndsMayMeetTheEndOfTheBuffersAnywhere) {
    std::mt19937 random(20284);
    const std::string bytes = randomBytes(random, 9000);
    const std::string text = base64::encode(bytes);
    for (unsigned long first = 1; first <= 100; ++first) {
        Conditions conditions;
        conditions.content = bytes;
        conditions.reads = {{1, 1, Outcome::Normal, first}, {2, 2, Outcome::Refuse}};
        expectSame(encodeByBlocks, encodeAtOnce, conditions);
        conditions.content = text;
        conditions.reads = {{1, 1, Outcome::Normal, first}};
        expectSame(decodeByBlocks, decodeAtOnce, conditions);
        conditions.content = std::string(first, '\n') + text;
        conditions.reads.clear();
        expectSame(decodeByBlocks, decodeAtOnce, conditions);
    }
}

TEST(OCBase64Model, SourceAndTargetMayBeOneStream) {
    std::mt19937 random(20285);
    for (int round = 0; round < 40; ++round) {
        Conditions conditions;
        conditions.sameStream = true;
        // The second write ends it, which would go on for ever.
        conditions.writes = {{2, 3, Outcome::Refuse}};
        conditions.content = randomBytes(random, 1 + random() % 9000);
        expectSame(encodeByBlocks, encodeAtOnce, conditions);
        conditions.content = base64::encode(conditions.content);
        expectSame(decodeByBlocks, decodeAtOnce, conditions);
    }
}

} // namespace
