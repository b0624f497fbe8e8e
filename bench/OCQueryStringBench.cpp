// The parameters of a URL, beside uriparser and GLib, each into its own form of a list.

#include "OCQueryString.h"

#include <benchmark/benchmark.h>

#include <random>
#include <string>

#include <glib.h>
#include <uriparser/Uri.h>

namespace {

/// 100 pairs as forms send them: names of 3 to 12 characters, values of up to 30, of which some are
/// encoded.
std::string makeQuery() {
    std::mt19937 random(5700);
    std::string text;
    for (int i = 0; i < 100; ++i) {
        if (i != 0)
            text += '&';
        for (unsigned long n = 3 + random() % 10; n != 0; --n)
            text += static_cast<char>('a' + random() % 26);
        text += '=';
        const bool encoded = random() % 4 == 0;
        for (unsigned long n = random() % 31; n != 0; --n) {
            if (encoded && random() % 6 == 0)
                text += random() % 2 == 0 ? "+" : "%2F";
            else
                text += static_cast<char>('a' + random() % 26);
        }
    }
    return text;
}

const std::string& queryText() {
    static const std::string text = makeQuery();
    return text;
}

void orvabase(benchmark::State& state) {
    const OCAnsiString text(queryText().data(), queryText().size());
    for (auto _ : state) {
        const OCQueryString query(text);
        benchmark::DoNotOptimize(query.getCount());
    }
}
BENCHMARK(orvabase)->Name("BM_query_parse_100_pairs/orvabase");

void uriparser(benchmark::State& state) {
    const std::string& text = queryText();
    for (auto _ : state) {
        UriQueryListA* list = nullptr;
        int count = 0;
        if (uriDissectQueryMallocA(&list, &count, text.data(), text.data() + text.size()) !=
            URI_SUCCESS)
            state.SkipWithError("refused");
        benchmark::DoNotOptimize(list);
        uriFreeQueryListA(list);
    }
}
BENCHMARK(uriparser)->Name("BM_query_parse_100_pairs/uriparser");

void glib(benchmark::State& state) {
    const std::string& text = queryText();
    for (auto _ : state) {
        GHashTable* const table = g_uri_parse_params(text.data(), static_cast<gssize>(text.size()),
                                                     "&", G_URI_PARAMS_WWW_FORM, nullptr);
        if (table == nullptr)
            state.SkipWithError("refused");
        benchmark::DoNotOptimize(table);
        g_hash_table_unref(table);
    }
}
BENCHMARK(glib)->Name("BM_query_parse_100_pairs/glib");

} // namespace
