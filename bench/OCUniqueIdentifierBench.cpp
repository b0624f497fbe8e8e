// Identifiers to text and back, beside libuuid and Qt. Everybody makes lower-case text without
// braces into a string of his own kind (libuuid: an array), and reads 36 characters.

#include "OCUniqueIdentifier.h"

#include <QByteArray>
#include <QUuid>
#include <benchmark/benchmark.h>
#include <cstring>
#include <uuid/uuid.h>

namespace {

const char sample[] = "0123abcd-4567-89ab-cdef-0123456789ab";

void formatOrvabase(benchmark::State& state) {
    OCUniqueIdentifier identifier;
    identifier.setText(sample);
    for (auto _ : state) {
        benchmark::DoNotOptimize(identifier);
        const OCAnsiString text = identifier.getText();
        benchmark::DoNotOptimize(text.getString());
    }
}
BENCHMARK(formatOrvabase)->Name("BM_identifier_format/orvabase");

void formatLibuuid(benchmark::State& state) {
    uuid_t identifier;
    uuid_parse(sample, identifier);
    for (auto _ : state) {
        benchmark::DoNotOptimize(identifier);
        char text[UUID_STR_LEN];
        uuid_unparse_lower(identifier, text);
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(formatLibuuid)->Name("BM_identifier_format/libuuid");

void formatQt(benchmark::State& state) {
    const QUuid identifier(QLatin1String(sample, 36));
    for (auto _ : state) {
        benchmark::DoNotOptimize(&identifier);
        const QByteArray text = identifier.toByteArray(QUuid::WithoutBraces);
        benchmark::DoNotOptimize(text.constData());
    }
}
BENCHMARK(formatQt)->Name("BM_identifier_format/Qt");

void parseOrvabase(benchmark::State& state) {
    const OCAnsiString text(sample);
    OCUniqueIdentifier identifier;
    for (auto _ : state) {
        benchmark::DoNotOptimize(&text);
        benchmark::ClobberMemory();
        identifier.setText(text);
        benchmark::DoNotOptimize(identifier);
    }
}
BENCHMARK(parseOrvabase)->Name("BM_identifier_parse/orvabase");

void parseLibuuid(benchmark::State& state) {
    char text[UUID_STR_LEN];
    std::memcpy(text, sample, sizeof text);
    uuid_t identifier;
    for (auto _ : state) {
        benchmark::DoNotOptimize(text);
        uuid_parse(text, identifier);
        benchmark::DoNotOptimize(identifier);
    }
}
BENCHMARK(parseLibuuid)->Name("BM_identifier_parse/libuuid");

void parseQt(benchmark::State& state) {
    const QByteArray text(sample, 36);
    for (auto _ : state) {
        benchmark::DoNotOptimize(&text);
        benchmark::ClobberMemory();
        QUuid identifier(text);
        benchmark::DoNotOptimize(identifier);
    }
}
BENCHMARK(parseQt)->Name("BM_identifier_parse/Qt");

} // namespace
