// Identifiers against a second reader and writer: the same texts are accepted, they mean the same
// bytes, and what is written is read back. Every input is taken as a text, and 16 bytes of it as an
// identifier.

#include "OCUniqueIdentifier.h"

#include "Require.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

std::string standard(const OCAnsiString& text) {
    return std::string(text.getString(), text.getLength());
}

/// Reads a text character by character, with a pattern to go by.
bool modelParse(const std::string& text, OSUniqueIdentifier& identifier) {
    static const char pattern[] = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
    if (text.size() != sizeof pattern - 1)
        return false;
    std::string digits;
    for (size_t i = 0; i < text.size(); ++i) {
        if (pattern[i] == '-') {
            if (text[i] != '-')
                return false;
            continue;
        }
        if (text[i] == 0 || !strchr("0123456789abcdefABCDEF", text[i]))
            return false;
        digits += text[i];
    }
    const auto number = [&](size_t begin, size_t count) {
        return strtoul(digits.substr(begin, count).c_str(), nullptr, 16);
    };
    identifier.data1 = static_cast<unsigned int>(number(0, 8));
    identifier.data2 = static_cast<unsigned short>(number(8, 4));
    identifier.data3 = static_cast<unsigned short>(number(12, 4));
    for (size_t i = 0; i < 8; ++i)
        identifier.data4[i] = static_cast<unsigned char>(number(16 + 2 * i, 2));
    return true;
}

std::string modelFormat(const OSUniqueIdentifier& s) {
    char text[37];
    snprintf(text, sizeof text, "%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x", s.data1,
             s.data2, s.data3, s.data4[0], s.data4[1], s.data4[2], s.data4[3], s.data4[4],
             s.data4[5], s.data4[6], s.data4[7]);
    return text;
}

bool same(const OSUniqueIdentifier& a, const OSUniqueIdentifier& b) {
    return memcmp(&a, &b, sizeof a) == 0;
}

void checkValue(const OSUniqueIdentifier& structure) {
    const OCUniqueIdentifier identifier(structure);
    const OCAnsiString text = identifier.getText();
    REQUIRE(standard(text) == modelFormat(structure));
    REQUIRE(standard(identifier.getTextData1()) + "-" + standard(identifier.getTextData2()) + "-" +
                standard(identifier.getTextData3()) + "-" + standard(identifier.getTextData4()) ==
            standard(text));
    OCUniqueIdentifier back;
    REQUIRE(identifier.isAssigned() == !(back == identifier));
    back.setText(text);
    REQUIRE(same(structure, back.getStructure()));
    REQUIRE(back == identifier && back.compare(identifier) == CompareResultEqual);
}

void checkText(const std::string& text) {
    const OCAnsiString string(text.data(), text.size());
    OSUniqueIdentifier before;
    memset(&before, 0x5A, sizeof before);
    OSUniqueIdentifier expected = before;
    const bool valid = modelParse(text, expected);
    if (!valid)
        expected = before;

    REQUIRE(OCUniqueIdentifier::validateText(string) == valid);
    OCUniqueIdentifier identifier(before);
    OSUniqueIdentifier pieces = before;
    bool refused = false;
    try {
        identifier.setText(string);
        OCUniqueIdentifier::setTextData4(pieces, string);
        OCUniqueIdentifier::setTextData3(pieces, string);
        OCUniqueIdentifier::setTextData2(pieces, string);
        OCUniqueIdentifier::setTextData1(pieces, string);
    } catch (const OXUniqueIdentifier_MalformedString& failure) {
        refused = true;
        REQUIRE(standard(failure.getMessage()) == "The unique identifier is malformed");
    }
    REQUIRE(refused == !valid);
    REQUIRE(same(identifier.getStructure(), expected));
    REQUIRE(same(pieces, expected));
    if (valid)
        checkValue(expected);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    checkText(std::string(reinterpret_cast<const char*>(data), size));
    OSUniqueIdentifier structure = {};
    memcpy(&structure, data, size < sizeof structure ? size : sizeof structure);
    checkValue(structure);
    return 0;
}
