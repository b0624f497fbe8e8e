// Environment blocks and both of their buffers against a plain model. The input is the environment
// of a process: entries that end at zero bytes. As a list, the same entries become variables with
// what stands before and behind their first `=`.

#include "OCEnvironment.h"
#include "Require.h"

#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <unistd.h>

namespace {

/// Names are ordered by signed bytes.
struct Less {
    bool operator()(const std::string& a, const std::string& b) const {
        for (std::size_t i = 0; i < a.size() && i < b.size(); ++i) {
            const signed char left = static_cast<signed char>(a[i]);
            const signed char right = static_cast<signed char>(b[i]);
            if (left != right)
                return left < right;
        }
        return a.size() < b.size();
    }
};

typedef std::vector<std::pair<std::string, std::string>> Variables;

std::string standard(const OCAnsiString& text) {
    return std::string(text.getString(), text.getLength());
}

/// Reads `entries` as the environment of the process.
void readEntries(OCEnvironmentBlock& block, std::vector<std::string>& entries) {
    std::vector<char*> pointers;
    pointers.reserve(entries.size() + 1);
    for (std::string& entry : entries)
        pointers.push_back(entry.data());
    pointers.push_back(nullptr);
    char** const held = environ;
    environ = pointers.data();
    block.readProcessEnvironment();
    environ = held;
}

void requireVariables(const Variables& expected, const OCNamedList& list) {
    require(list.getCount() == expected.size(), "the number of variables");
    for (unsigned long i = 0; i < expected.size(); ++i) {
        require(standard(list.getName(i)) == expected[i].first, "a name");
        require(standard(list.getValue(i)) == expected[i].second, "a value");
    }
}

void requireBuffers(const Variables& variables, const OCEnvironmentBufferArray& array,
                    const OCEnvironmentBufferSerial& serial) {
    std::string bytes;
    char* const* pointer = array.getBuffer();
    for (const auto& each : variables) {
        if (each.second.empty())
            continue;
        const std::string entry = each.first + "=" + each.second;
        require(*pointer != nullptr && entry == *pointer, "a string of the array");
        ++pointer;
        bytes += entry + '\0';
    }
    require(*pointer == nullptr, "the end of the array");
    bytes += '\0';
    require(std::memcmp(bytes.data(), serial.getBuffer(), bytes.size()) == 0, "the serial buffer");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string input(reinterpret_cast<const char*>(data), size);
    std::vector<std::string> entries;
    for (std::size_t begin = 0; begin < size; begin += entries.back().size() + 1)
        entries.emplace_back(input.c_str() + begin);

    std::map<std::string, std::string, Less> read;
    Variables all;
    for (const std::string& entry : entries) {
        const std::size_t equals = entry.find('=');
        const std::string name = entry.substr(0, equals);
        const std::string value = equals == std::string::npos ? "" : entry.substr(equals + 1);
        if (!name.empty() && !value.empty())
            read[name] = value;
        all.emplace_back(name, value);
    }

    OCEnvironmentBlock block;
    readEntries(block, entries);
    const Variables expected(read.begin(), read.end());
    requireVariables(expected, block.getVariables());
    requireBuffers(expected, OCEnvironmentBufferArray(block), OCEnvironmentBufferSerial(block));
    // What is read again replaces what is there.
    readEntries(block, entries);
    requireVariables(expected, block.getVariables());

    OCNamedList list(NamedListCaseSensitive, NamedListModeUnsorted);
    for (const auto& each : all)
        list.addElement(each.first.c_str(), each.second.c_str());
    requireBuffers(all, OCEnvironmentBufferArray(list), OCEnvironmentBufferSerial(list));
    return 0;
}
