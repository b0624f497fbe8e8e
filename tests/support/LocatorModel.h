#ifndef ORVABASE_TESTS_LOCATORMODEL_H
#define ORVABASE_TESTS_LOCATORMODEL_H

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

// Queries and locators once more, written as plainly as possible over std::string: one character at
// a time, copies wherever a copy is easier, nothing shared with the library.

struct QueryModel {
    std::vector<std::pair<std::string, std::string>> pairs;

    static char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }
    static bool same(const std::string& a, const std::string& b) {
        std::string x;
        std::string y;
        for (char c : a)
            x += lower(c);
        for (char c : b)
            y += lower(c);
        return x == y;
    }

    static int digit(const std::string& text, std::size_t at) {
        if (at >= text.size())
            return -1;
        const char c = lower(text[at]);
        if (c >= '0' && c <= '9')
            return c - '0';
        return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
    }

    static std::string decoded(const std::string& text) {
        std::string result;
        for (std::size_t i = 0; i < text.size(); ++i) {
            const int high = digit(text, i + 1);
            const int low = digit(text, i + 2);
            if (text[i] == '%' && high >= 0 && low >= 0) {
                result += static_cast<char>(high * 16 + low);
                i += 2;
            } else {
                result += text[i] == '+' ? ' ' : text[i];
            }
        }
        return result;
    }

    static std::string encoded(const std::string& text) {
        static const char digits[] = "0123456789abcdef";
        std::string result;
        for (char c : text) {
            const char l = lower(c);
            const int byte = static_cast<unsigned char>(c);
            if ((l >= 'a' && l <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '_') {
                result += c;
            } else if (c == ' ') {
                result += '+';
            } else {
                result += '%';
                result += digits[byte / 16];
                result += digits[byte % 16];
            }
        }
        return result;
    }

    void setText(const std::string& text) {
        pairs.clear();
        std::string name;
        std::string value;
        bool inValue = false;
        for (std::size_t i = 0; i <= text.size(); ++i) {
            if (i == text.size() || text[i] == '&') {
                if (!name.empty())
                    pairs.emplace_back(decoded(name), decoded(value));
                name.clear();
                value.clear();
                inValue = false;
            } else if (text[i] == '=' && !inValue) {
                inValue = true;
            } else {
                (inValue ? value : name) += text[i];
            }
        }
    }

    std::string getText(int format) const {
        std::string result;
        bool first = true;
        for (const auto& pair : pairs) {
            if (!first)
                result += format == 1 ? "&amp;" : "&";
            first = false;
            result += encoded(pair.first);
            if (!pair.second.empty())
                result += "=" + encoded(pair.second);
        }
        return result;
    }

    /// The places of the elements of a name.
    std::vector<std::size_t> places(const std::string& name) const {
        std::vector<std::size_t> result;
        for (std::size_t i = 0; i < pairs.size(); ++i)
            if (same(pairs[i].first, name))
                result.push_back(i);
        return result;
    }

    void remove(const std::string& name) {
        std::vector<std::pair<std::string, std::string>> kept;
        for (const auto& pair : pairs)
            if (!same(pair.first, name))
                kept.push_back(pair);
        pairs = kept;
    }

    void setValue(const std::string& name, const std::string& value) {
        const std::vector<std::size_t> found = places(name);
        if (found.size() == 1) {
            pairs[found[0]].second = value;
        } else {
            remove(name);
            pairs.emplace_back(name, value);
        }
    }
};

struct LocatorModel {
    std::string protocol;
    std::string server;
    std::string resource;
    QueryModel parameters;
    std::uint32_t port = 0;

    /// Whether the text could be read; if not, nothing is changed.
    bool setText(const std::string& text) {
        LocatorModel read;
        std::string rest = text;
        const std::size_t mark = rest.find('?');
        if (mark != std::string::npos) {
            read.parameters.setText(rest.substr(mark + 1));
            rest.resize(mark);
        }
        const std::size_t colon = rest.find(':');
        if (colon != std::string::npos) {
            read.protocol = rest.substr(0, colon);
            rest = rest.substr(colon + 1);
        }
        if (rest.substr(0, 2) == "//") {
            rest = rest.substr(2);
            while (!rest.empty() && rest[0] != ':' && rest[0] != '/') {
                read.server += rest[0];
                rest.erase(0, 1);
            }
        }
        if (rest.substr(0, 1) == ":") {
            const std::size_t slash = rest.find('/');
            const std::string number =
                rest.substr(1, slash == std::string::npos ? slash : slash - 1);
            if (number.empty())
                return false;
            for (std::size_t i = 0; i < number.size() && number[i] >= '0' && number[i] <= '9'; ++i)
                read.port = read.port * 10 + static_cast<std::uint32_t>(number[i] - '0');
            rest = slash == std::string::npos ? "" : rest.substr(slash);
        }
        read.resource = rest;
        *this = read;
        return true;
    }

    std::string getText(int format) const {
        std::string text;
        if (!server.empty()) {
            if (!protocol.empty())
                text += protocol + ":";
            text += (server[0] == '/' ? "" : "//") + server;
            if (port != 0)
                text += ":" + std::to_string(port);
        }
        if (!resource.empty()) {
            if (!server.empty() && resource[0] != '/' && resource[0] != '\\')
                text += "/";
            text += resource;
            if (!parameters.pairs.empty())
                text += "?" + parameters.getText(format);
        }
        return text;
    }
};

#endif
