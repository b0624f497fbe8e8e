// Taking 100 arguments apart, beside GLib's GOptionContext.

#include "OCApplicationArguments.h"

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include <glib.h>

namespace {

/// A program's name and 100 arguments: long options with and without values, short ones, and names
/// of files.
const std::vector<std::string>& texts() {
    static const std::vector<std::string> made = [] {
        std::vector<std::string> arguments = {"/usr/bin/program"};
        for (int i = 0; i < 20; ++i) {
            arguments.push_back("--verbose");
            arguments.push_back("--level=" + std::to_string(i));
            arguments.push_back("--output=/home/ann/documents/file-" + std::to_string(i));
            arguments.push_back("-vq");
            arguments.push_back("/usr/share/data/input-" + std::to_string(i) + ".txt");
        }
        return arguments;
    }();
    return made;
}

std::vector<char*> pointers() {
    std::vector<char*> made;
    for (const std::string& text : texts())
        made.push_back(const_cast<char*>(text.c_str()));
    made.push_back(nullptr);
    return made;
}

void parseOrvabase(benchmark::State& state) {
    std::vector<char*> arguments = pointers();
    OCApplicationArgumentList list;
    for (auto _ : state) {
        list.assign(static_cast<int>(texts().size()), arguments.data());
        benchmark::DoNotOptimize(list.getCount());
    }
    if (list.getCount() != 120)
        state.SkipWithError("another number of arguments");
}

void parseGlib(benchmark::State& state) {
    const std::vector<char*> arguments = pointers();
    for (auto _ : state) {
        gboolean verbose = FALSE;
        gboolean quiet = FALSE;
        gint level = 0;
        gchar* output = nullptr;
        gchar** files = nullptr;
        const GOptionEntry entries[] = {
            {"verbose", 'v', 0, G_OPTION_ARG_NONE, &verbose, "", nullptr},
            {"quiet", 'q', 0, G_OPTION_ARG_NONE, &quiet, "", nullptr},
            {"level", 'l', 0, G_OPTION_ARG_INT, &level, "", nullptr},
            {"output", 'o', 0, G_OPTION_ARG_FILENAME, &output, "", nullptr},
            {G_OPTION_REMAINING, 0, 0, G_OPTION_ARG_FILENAME_ARRAY, &files, "", nullptr},
            {nullptr, 0, 0, G_OPTION_ARG_NONE, nullptr, nullptr, nullptr}};
        std::vector<char*> copy = arguments; // it takes out what it has parsed
        int count = static_cast<int>(texts().size());
        char** vector = copy.data();
        GOptionContext* const context = g_option_context_new(nullptr);
        g_option_context_add_main_entries(context, entries, nullptr);
        if (!g_option_context_parse(context, &count, &vector, nullptr) || level != 19 ||
            g_strv_length(files) != 20)
            state.SkipWithError("not parsed");
        g_option_context_free(context);
        g_strfreev(files);
        g_free(output);
    }
}

BENCHMARK(parseOrvabase)->Name("BM_parse_100_arguments/orvabase");
BENCHMARK(parseGlib)->Name("BM_parse_100_arguments/glib");

} // namespace
