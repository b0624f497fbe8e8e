// A hex dump of 1 MiB, on one line and in lines of 24 bytes. Every result is a fresh text. The
// peers know no lines: for these, OpenSSL writes line by line right into its place, and Qt appends
// the text of one line after the other to a text that has the room from the start. (OpenSSL writes
// capitals.)

#include "OCHexDump.h"

#include <benchmark/benchmark.h>

#include <QByteArray>
#include <openssl/crypto.h>

#include <cstdlib>
#include <string>

namespace {

using benchmark::DoNotOptimize;
using benchmark::State;

constexpr unsigned long size = 1024UL * 1024;
constexpr unsigned long perLine = 24;
constexpr unsigned long lineWidth = 3 * perLine + 2;
constexpr unsigned long linesLength = 3 * size - 1 + (size - 1) / perLine * 2;

const std::string& bytes() {
    static const std::string made = [] {
        std::string text(size, '\0');
        for (unsigned long i = 0; i < size; ++i)
            text[i] = static_cast<char>(i * 31 + i / 251);
        return text;
    }();
    return made;
}

void require(bool condition) {
    if (!condition)
        std::abort();
}

void finish(State& state) {
    state.SetBytesProcessed(state.iterations() * static_cast<long>(size));
}

void dumpLine(State& state) {
    const OCHexDump dump;
    for (auto _ : state) {
        const OCAnsiString text = dump.dumpSingleLine(bytes().data(), size);
        require(text.getLength() == 3 * size - 1);
        DoNotOptimize(text.getString());
    }
    finish(state);
}

void opensslLine(State& state) {
    const auto* const data = reinterpret_cast<const unsigned char*>(bytes().data());
    for (auto _ : state) {
        char* const text = OPENSSL_buf2hexstr(data, size);
        require(text != nullptr);
        DoNotOptimize(text);
        OPENSSL_free(text);
    }
    finish(state);
}

void qtLine(State& state) {
    const QByteArray data = QByteArray::fromRawData(bytes().data(), size);
    for (auto _ : state) {
        const QByteArray text = data.toHex(':');
        require(text.size() == 3 * size - 1);
        DoNotOptimize(text.constData());
    }
    finish(state);
}

void dumpLines(State& state) {
    const OCHexDump dump;
    for (auto _ : state) {
        const OCAnsiString text = dump.dumpMultipleLines(bytes().data(), size);
        require(text.getLength() == linesLength);
        DoNotOptimize(text.getString());
    }
    finish(state);
}

void opensslLines(State& state) {
    const auto* const data = reinterpret_cast<const unsigned char*>(bytes().data());
    for (auto _ : state) {
        char* const text = static_cast<char*>(std::malloc(linesLength + lineWidth));
        char* to = text;
        for (unsigned long i = 0; i < size; i += perLine) {
            const unsigned long n = size - i < perLine ? size - i : perLine;
            require(OPENSSL_buf2hexstr_ex(to, lineWidth, nullptr, data + i, n, ':') == 1);
            to += 3 * n - 1;
            *to++ = ':';
            *to++ = '\r';
            *to++ = '\n';
        }
        DoNotOptimize(text);
        std::free(text);
    }
    finish(state);
}

void qtLines(State& state) {
    for (auto _ : state) {
        QByteArray text;
        text.reserve(linesLength + lineWidth);
        for (unsigned long i = 0; i < size; i += perLine) {
            const unsigned long n = size - i < perLine ? size - i : perLine;
            text += QByteArray::fromRawData(bytes().data() + i, static_cast<int>(n)).toHex(':');
            text.append(":\r\n", 3);
        }
        DoNotOptimize(text.constData());
    }
    finish(state);
}

BENCHMARK(dumpLine)->Name("BM_hex_dump_1M_line/orvabase");
BENCHMARK(opensslLine)->Name("BM_hex_dump_1M_line/openssl");
BENCHMARK(qtLine)->Name("BM_hex_dump_1M_line/qt");
BENCHMARK(dumpLines)->Name("BM_hex_dump_1M_lines/orvabase");
BENCHMARK(opensslLines)->Name("BM_hex_dump_1M_lines/openssl");
BENCHMARK(qtLines)->Name("BM_hex_dump_1M_lines/qt");

} // namespace
