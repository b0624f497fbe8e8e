// Dates in the form of RFC 1123, as a web server writes and reads them. The process is in a time
// zone that TZ names: the C library looks at the file of the default zone again and again
// otherwise.

#include "OCDateTime.h"

#include <apr_date.h>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr char rfc1123[] = "%a, %d %b %Y %H:%M:%S GMT";

struct Dates {
    std::vector<time_t> moments;
    std::vector<OCDateTime> values;
    std::vector<std::string> texts;
    std::vector<OCAnsiString> strings;

    Dates() {
        setenv("TZ", "UTC", 1);
        tzset();
        std::mt19937 random(1123);
        for (int i = 0; i < 256; ++i) {
            const time_t moment = 600000000 + static_cast<time_t>(random() % 1300000000U);
            struct tm structure;
            gmtime_r(&moment, &structure);
            char text[64];
            strftime(text, sizeof text, rfc1123, &structure);
            moments.push_back(moment);
            values.push_back(OCDateTime(structure));
            texts.push_back(text);
            strings.push_back(OCAnsiString(text));
        }
    }
};

const Dates& dates() {
    static const Dates made;
    return made;
}

// The peers and the library have to agree before their times mean anything.
void check(bool same) {
    if (!same) {
        fprintf(stderr, "the dates of the library and of a peer differ\n");
        abort();
    }
}

template<class Work>
void run(benchmark::State& state, Work work) {
    const Dates& all = dates();
    for (std::size_t i = 0; i < all.moments.size(); ++i)
        check(work(all, i));
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(work(all, i));
        i = (i + 1) % 256;
    }
}

void formatWithLibrary(benchmark::State& state) {
    run(state, [](const Dates& all, std::size_t i) {
        const OCAnsiString text = all.values[i].exportText(DateTimeFormatRfc1123);
        return text.getLength() == 29 && text.getString()[5] == all.texts[i][5];
    });
}

void formatWithStrftime(benchmark::State& state) {
    run(state, [](const Dates& all, std::size_t i) {
        struct tm structure;
        char text[64];
        gmtime_r(&all.moments[i], &structure);
        return strftime(text, sizeof text, rfc1123, &structure) == 29 && text[5] == all.texts[i][5];
    });
}

void parseWithLibrary(benchmark::State& state) {
    run(state, [](const Dates& all, std::size_t i) {
        OCDateTime value;
        value.importText(all.strings[i], DateTimeFormatRfc1123);
        return value.second == all.values[i].second;
    });
}

void parseWithApr(benchmark::State& state) {
    run(state, [](const Dates& all, std::size_t i) {
        return apr_date_parse_http(all.texts[i].c_str()) == all.moments[i] * APR_USEC_PER_SEC;
    });
}

void parseWithStrptime(benchmark::State& state) {
    run(state, [](const Dates& all, std::size_t i) {
        struct tm structure = {};
        return strptime(all.texts[i].c_str(), rfc1123, &structure) != nullptr &&
               timegm(&structure) == all.moments[i];
    });
}

BENCHMARK(formatWithLibrary)->Name("BM_rfc1123_format/orvabase");
BENCHMARK(formatWithStrftime)->Name("BM_rfc1123_format/strftime");
BENCHMARK(parseWithLibrary)->Name("BM_rfc1123_parse/orvabase");
BENCHMARK(parseWithApr)->Name("BM_rfc1123_parse/apr");
BENCHMARK(parseWithStrptime)->Name("BM_rfc1123_parse/strptime");

} // namespace
