// Base64 of 16 MiB in lines of 64 characters and CR LF, and back. The library goes from stream to
// stream; the peers go from memory to memory, and do what each does best. Nobody's time holds an
// allocation: the peers' target is there before, and has been written to, and so has the library's
// target stream, which is overwritten from its beginning. The rows "fresh" are the same with a new
// target for each pass, which the peers make at its full size.
//
// - modp_b64 and OpenSSL's blocks know no lines, so they are called once a line (48 bytes, 64
//   characters), and the caller writes or passes over the line end;
// - GLib breaks lines by itself, in one call for everything, but after 76 characters and with LF
//   alone, which is a little less work; its decoder passes over line ends by itself.

#include "OCBase64.h"
#include "OCMemoryStream.h"

#include <benchmark/benchmark.h>

#include <glib.h>
#include <modp_b64.h>
#include <openssl/evp.h>

#include <cstdlib>
#include <cstring>
#include <random>
#include <string>

namespace {

using benchmark::ClobberMemory;
using benchmark::DoNotOptimize;
using benchmark::State;

constexpr unsigned long size = 16UL * 1024 * 1024;

const std::string& bytes() {
    static const std::string made = [] {
        std::string text(size, '\0');
        std::mt19937_64 random(1);
        for (unsigned long i = 0; i < size; i += 8) {
            const unsigned long word = random();
            std::memcpy(&text[i], &word, 8);
        }
        return text;
    }();
    return made;
}

void require(bool condition) {
    if (!condition)
        std::abort();
}

template<class EncodeLine>
unsigned long encodeLines(char* to, EncodeLine encodeLine) {
    const char* from = bytes().data();
    const char* const end = from + size;
    char* const start = to;
    for (; end - from >= 48; from += 48) {
        encodeLine(to, from, 48UL);
        to[64] = '\r';
        to[65] = '\n';
        to += 66;
    }
    to += encodeLine(to, from, static_cast<unsigned long>(end - from));
    return static_cast<unsigned long>(to - start);
}

const std::string& text() {
    static const std::string made = [] {
        std::string lines(size / 48 * 66 + 100, '\0');
        lines.resize(encodeLines(lines.data(), [](char* to, const char* from, unsigned long n) {
            return modp_b64_encode(to, from, n);
        }));
        return lines;
    }();
    return made;
}

void finish(State& state) {
    state.SetBytesProcessed(state.iterations() * static_cast<long>(size));
}

void encodeByStreams(State& state) {
    OCMemoryStream source(bytes().data(), size);
    OCMemoryStream target(std::string(text().size(), '\0').data(), text().size());
    for (auto _ : state) {
        source.setPosition(0);
        target.setPosition(0);
        OCBase64Encoder().encode(source, target);
        ClobberMemory();
    }
    require(target.makeBuffer().compare(text().data(), text().size()) == CompareResultEqual);
    finish(state);
}

void encodeByStreamsToFresh(State& state) {
    OCMemoryStream source(bytes().data(), size);
    for (auto _ : state) {
        OCMemoryStream target;
        source.setPosition(0);
        OCBase64Encoder().encode(source, target);
        ClobberMemory();
    }
    finish(state);
}

void encodeByModpToFresh(State& state) {
    for (auto _ : state) {
        char* const target = static_cast<char*>(std::malloc(text().size() + 100));
        DoNotOptimize(encodeLines(target, [](char* to, const char* from, unsigned long n) {
            return modp_b64_encode(to, from, n);
        }));
        ClobberMemory();
        std::free(target);
    }
    finish(state);
}

template<class EncodeLine>
void encodeByLines(State& state, EncodeLine encodeLine) {
    std::string target(text().size() + 100, '\0');
    unsigned long length = 0;
    for (auto _ : state) {
        length = encodeLines(target.data(), encodeLine);
        ClobberMemory();
    }
    require(target.compare(0, length, text()) == 0);
    finish(state);
}

void encodeByModp(State& state) {
    encodeByLines(state, [](char* to, const char* from, unsigned long n) {
        return modp_b64_encode(to, from, n);
    });
}

void encodeByOpenssl(State& state) {
    encodeByLines(state, [](char* to, const char* from, unsigned long n) {
        return static_cast<unsigned long>(
            EVP_EncodeBlock(reinterpret_cast<unsigned char*>(to),
                            reinterpret_cast<const unsigned char*>(from), static_cast<int>(n)));
    });
}

void encodeByGlib(State& state) {
    std::string target(size / 3 * 4 + size / 48 * 2 + 100, '\0');
    for (auto _ : state) {
        int progress = 0;
        int saved = 0;
        unsigned long length = g_base64_encode_step(reinterpret_cast<const guchar*>(bytes().data()),
                                                    size, TRUE, target.data(), &progress, &saved);
        length += g_base64_encode_close(TRUE, target.data() + length, &progress, &saved);
        DoNotOptimize(length);
        ClobberMemory();
    }
    finish(state);
}

void decodeByStreams(State& state) {
    OCMemoryStream source(text().data(), text().size());
    OCMemoryStream target(std::string(size, '\0').data(), size);
    for (auto _ : state) {
        source.setPosition(0);
        target.setPosition(0);
        OCBase64Decoder().decode(source, target);
        ClobberMemory();
    }
    require(target.makeBuffer().compare(bytes().data(), size) == CompareResultEqual);
    finish(state);
}

void decodeByStreamsToFresh(State& state) {
    OCMemoryStream source(text().data(), text().size());
    for (auto _ : state) {
        OCMemoryStream target;
        source.setPosition(0);
        OCBase64Decoder().decode(source, target);
        ClobberMemory();
    }
    finish(state);
}

void decodeByModpToFresh(State& state) {
    for (auto _ : state) {
        char* to = static_cast<char*>(std::malloc(size + 100));
        char* const target = to;
        const char* from = text().data();
        const char* const end = from + text().size();
        for (; end - from > 66; from += 66) {
            modp_b64_decode(to, from, 64);
            to += 48;
        }
        modp_b64_decode(to, from, static_cast<unsigned long>(end - from));
        ClobberMemory();
        std::free(target);
    }
    finish(state);
}

template<class DecodeLine>
void decodeByLines(State& state, DecodeLine decodeLine) {
    std::string target(size + 100, '\0');
    for (auto _ : state) {
        const char* from = text().data();
        const char* const end = from + text().size();
        char* to = target.data();
        for (; end - from > 66; from += 66) {
            decodeLine(to, from, 64UL);
            to += 48;
        }
        decodeLine(to, from, static_cast<unsigned long>(end - from));
        ClobberMemory();
    }
    require(target.compare(0, size, bytes()) == 0);
    finish(state);
}

void decodeByModp(State& state) {
    decodeByLines(state, [](char* to, const char* from, unsigned long n) {
        return modp_b64_decode(to, from, n);
    });
}

void decodeByOpenssl(State& state) {
    decodeByLines(state, [](char* to, const char* from, unsigned long n) {
        return EVP_DecodeBlock(reinterpret_cast<unsigned char*>(to),
                               reinterpret_cast<const unsigned char*>(from), static_cast<int>(n));
    });
}

void decodeByGlib(State& state) {
    std::string target(size + 100, '\0');
    unsigned long length = 0;
    for (auto _ : state) {
        int progress = 0;
        guint saved = 0;
        length = g_base64_decode_step(text().data(), text().size(),
                                      reinterpret_cast<guchar*>(target.data()), &progress, &saved);
        ClobberMemory();
    }
    require(length == size && target.compare(0, size, bytes()) == 0);
    finish(state);
}

BENCHMARK(encodeByStreams)->Name("BM_base64_encode_16M/orvabase")->Unit(benchmark::kMillisecond);
BENCHMARK(encodeByModp)->Name("BM_base64_encode_16M/modp_b64")->Unit(benchmark::kMillisecond);
BENCHMARK(encodeByOpenssl)->Name("BM_base64_encode_16M/openssl")->Unit(benchmark::kMillisecond);
BENCHMARK(encodeByStreamsToFresh)
    ->Name("BM_base64_encode_16M_fresh/orvabase")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(encodeByModpToFresh)
    ->Name("BM_base64_encode_16M_fresh/modp_b64")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(decodeByStreamsToFresh)
    ->Name("BM_base64_decode_16M_fresh/orvabase")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(decodeByModpToFresh)
    ->Name("BM_base64_decode_16M_fresh/modp_b64")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(encodeByGlib)->Name("BM_base64_encode_16M/glib")->Unit(benchmark::kMillisecond);
BENCHMARK(decodeByStreams)->Name("BM_base64_decode_16M/orvabase")->Unit(benchmark::kMillisecond);
BENCHMARK(decodeByModp)->Name("BM_base64_decode_16M/modp_b64")->Unit(benchmark::kMillisecond);
BENCHMARK(decodeByOpenssl)->Name("BM_base64_decode_16M/openssl")->Unit(benchmark::kMillisecond);
BENCHMARK(decodeByGlib)->Name("BM_base64_decode_16M/glib")->Unit(benchmark::kMillisecond);

} // namespace
