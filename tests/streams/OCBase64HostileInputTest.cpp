// Input made to be slow or to break the coders: whatever it is, time is linear and memory constant.

#include "OCBase64.h"

#include "support/FaultInjection.h"
#include "support/Growth.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

/// 64 MiB; less where the sanitizers make everything slow.
constexpr unsigned long large = fault::sanitized ? 2UL << 20 : 64UL << 20;

/// Repeats a piece until `size` bytes have been delivered, at most `chunk` at a time.
class Repeated : public OCStream {
public:
    Repeated(std::string repeated, unsigned long total, unsigned long atATime)
        : piece(std::move(repeated)), size(total), chunk(atATime) {
        while (piece.size() < 8192)
            piece += piece;
        period = piece.size();
        piece += piece;
    }

    bool read(void* buffer, unsigned long& count) override {
        unsigned long n = count < chunk ? count : chunk;
        n = n < size - position ? n : size - position;
        if (n == 0)
            return false;
        std::memcpy(buffer, piece.data() + position % period, n);
        position += n;
        count = n;
        return true;
    }
    unsigned long seek(long offset, OEStreamSeek) override {
        return position += static_cast<unsigned long>(offset);
    }
    void setSize(unsigned long) override {}
    bool write(const void*, unsigned long&) override { return false; }

private:
    std::string piece;
    unsigned long period;
    unsigned long size;
    unsigned long position = 0;
    unsigned long chunk;
};

/// Counts what is written, and takes at most `chunk` bytes at a time.
class Counter : public OCStream {
public:
    explicit Counter(unsigned long atATime) : chunk(atATime) {}

    bool read(void*, unsigned long&) override { return false; }
    unsigned long seek(long, OEStreamSeek) override { return written; }
    void setSize(unsigned long) override {}
    bool write(const void*, unsigned long& count) override {
        count = count < chunk ? count : chunk;
        written += count;
        return true;
    }

    unsigned long written = 0;

private:
    unsigned long chunk;
};

unsigned long decodedSize(const std::string& piece, unsigned long size,
                          unsigned long chunk = ~0UL) {
    Repeated source(piece, size, chunk);
    Counter target(chunk);
    OCBase64Decoder().decode(source, target);
    return target.written;
}

unsigned long encodedSize(unsigned long size, unsigned long chunk = ~0UL) {
    Repeated source("\x01\x80\xff", size, chunk);
    Counter target(chunk);
    OCBase64Encoder().encode(source, target);
    return target.written;
}

unsigned long textSize(unsigned long size) {
    const unsigned long characters = (size + 2) / 3 * 4;
    return characters + characters / 64 * 2;
}

TEST(OCBase64HostileInput, LargeInputIsEncoded) {
    EXPECT_EQ(encodedSize(large), textSize(large));
    EXPECT_EQ(encodedSize(large / 16 + 1, 1), textSize(large / 16 + 1));
}

TEST(OCBase64HostileInput, LargeInputIsDecodedWhateverIsInIt) {
    EXPECT_EQ(decodedSize("AAAA", large), large / 4 * 3);
    EXPECT_EQ(decodedSize("\n", large), 0U);
    EXPECT_EQ(decodedSize("A\n", large), large / 8 * 3);
    const unsigned long less = large / 16;
    EXPECT_EQ(decodedSize("\xff", less), 0U);
    EXPECT_EQ(decodedSize("AA\nA\n\n\n\nA", less / 9 * 9), less / 9 * 3);
    EXPECT_EQ(decodedSize("AA==", less), less / 4);
    EXPECT_EQ(decodedSize("AA =", less), less / 4);
    EXPECT_EQ(decodedSize("AAA=", less), less / 4 * 2);
    EXPECT_EQ(decodedSize("AAA\x80=", less / 5 * 5), less / 5 * 2);
    EXPECT_EQ(decodedSize("AAAA", less, 1), less / 4 * 3);
}

TEST(OCBase64HostileInput, TakesLinearTime) {
    const unsigned long size = fault::sanitized ? 20000 : 200000;
    EXPECT_LT(growth::ofEightTimes([](unsigned long n) { encodedSize(n); }, size), 30);
    for (const char* piece : {"AAAA", "\n", "A\n", "AA==", "AAA\x80="})
        EXPECT_LT(growth::ofEightTimes([&](unsigned long n) { decodedSize(piece, n); }, size), 30)
            << piece;
}

TEST(OCBase64HostileInput, TakesTheSameMemoryWhateverTheSize) {
    Repeated source("AA\nA=", 5000000, ~0UL);
    Counter target(~0UL);
    const unsigned long before = fault::heapRecord().requests;
    fault::resetLargestSize();
    OCBase64Decoder().decode(source, target);
    EXPECT_EQ(target.written, 2000000U);
    EXPECT_EQ(fault::heapRecord().requests - before, 2U);
    EXPECT_EQ(fault::heapRecord().largestSize, 4096U);
}

} // namespace
