#include "Text.h"
#include "Errors.h"

namespace {

unsigned int byteAt(const OCAnsiString& text, unsigned long index) {
    return static_cast<unsigned char>(text[index]);
}

/// The length in bytes of the character at `at`, 0 when it is none that XML allows.
unsigned long characterLength(const OCAnsiString& text, unsigned long at) {
    const unsigned int first = byteAt(text, at);
    if (first < 0x80)
        return first >= 32 || first == '\t' || first == '\n' || first == '\r' ? 1 : 0;
    const unsigned long length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
    if (first < 0xc2 || first > 0xf4 || length > text.getLength() - at)
        return 0;
    unsigned int code = first & (0x7fU >> length);
    for (unsigned long i = 1; i < length; ++i) {
        const unsigned int next = byteAt(text, at + i);
        if ((next & 0xc0) != 0x80)
            return 0;
        code = code << 6 | (next & 0x3f);
    }
    const unsigned int least = length == 2 ? 0x80 : length == 3 ? 0x800 : 0x10000;
    const bool surrogate = code >= 0xd800 && code < 0xe000;
    if (code < least || code > 0x10ffff || surrogate || code == 0xfffe || code == 0xffff)
        return 0;
    return length;
}

bool isControl(const OCAnsiString& text, unsigned long at, unsigned long length) {
    const unsigned int first = byteAt(text, at);
    return first < 32 || first == 127 ||
           (length == 2 && first == 0xc2 && byteAt(text, at + 1) < 0xa0);
}

/// Whether XML allows the character.
bool isCharacter(unsigned int code) {
    if (code < 32)
        return code == '\t' || code == '\n' || code == '\r';
    return code < 0xd800 || (code >= 0xe000 && code < 0xfffe) ||
           (code >= 0x10000 && code <= 0x10ffff);
}

void appendCharacter(OCAnsiString& text, unsigned int code) {
    const auto append = [&text](unsigned int byte) { text.append(static_cast<char>(byte)); };
    if (code < 0x80) {
        append(code);
        return;
    }
    if (code < 0x800) {
        append(0xc0 | code >> 6);
    } else {
        if (code < 0x10000) {
            append(0xe0 | code >> 12);
        } else {
            append(0xf0 | code >> 18);
            append(0x80 | (code >> 12 & 0x3f));
        }
        append(0x80 | (code >> 6 & 0x3f));
    }
    append(0x80 | (code & 0x3f));
}

bool isDigits(const OCAnsiString& text, unsigned long most) {
    for (unsigned long i = 0; i < text.getLength(); ++i) {
        if (text[i] < '0' || text[i] > '9')
            return false;
    }
    return text.getLength() > 0 && text.getLength() <= most;
}

/// Appends what the reference `name` (without `&` and `;`) stands for; false when it is none.
bool appendReference(OCAnsiString& text, const OCAnsiString& name) {
    static const struct {
        const char* name;
        char character;
    } entities[] = {{"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};
    for (const auto& entity : entities) {
        if (name == entity.name) {
            text.append(entity.character);
            return true;
        }
    }
    if (name.getLength() < 2 || name[0] != '#')
        return false;
    const bool hexadecimal = name[1] == 'x';
    OCAnsiString digits(name);
    digits.remove(0, hexadecimal ? 2 : 1);
    if (digits.getLength() == 0 || digits.getLength() > 7 || digits[0] == '-' || digits[0] == '+')
        return false;
    try {
        const unsigned int code =
            OCUnsignedIntegerConversion::fromString(digits, hexadecimal ? 16 : 10);
        if (!isCharacter(code))
            return false;
        appendCharacter(text, code);
        return true;
    } catch (const OXIntegerConversion&) {
        return false;
    }
}

} // namespace

bool isText(const OCAnsiString& text) {
    for (unsigned long at = 0; at < text.getLength();) {
        const unsigned long length = characterLength(text, at);
        if (length == 0)
            return false;
        at += length;
    }
    return true;
}

OCAnsiString visible(const OCAnsiString& text) {
    static const char digits[] = "0123456789abcdef";
    OCAnsiString result;
    for (unsigned long at = 0; at < text.getLength();) {
        const unsigned long length = characterLength(text, at);
        if (length > 0 && !isControl(text, at, length)) {
            result.append(text.getString() + at, length);
            at += length;
            continue;
        }
        const unsigned int byte = byteAt(text, at++);
        const char hexadecimal[] = {'\\', 'x', digits[byte >> 4], digits[byte & 15]};
        result.append(hexadecimal, sizeof hexadecimal);
    }
    return result;
}

OCAnsiString escapeContent(const OCAnsiString& text) {
    OCAnsiString result(text);
    result.replace("&", "&amp;").replace("<", "&lt;").replace(">", "&gt;");
    return result.replace("\r", "&#13;");
}

OCAnsiString escapeAttribute(const OCAnsiString& text) {
    return escapeContent(visible(text)).replace("\"", "&quot;");
}

OCAnsiString resolveReferences(const OCAnsiString& text) {
    OCAnsiString result;
    const unsigned long length = text.getLength();
    for (unsigned long at = 0; at < length; ++at) {
        if (text[at] != '&') {
            result.append(text[at]);
            continue;
        }
        OCAnsiString name;
        unsigned long end = at + 1;
        while (end < length && end - at < 12 && text[end] != ';')
            name.append(text[end++]);
        if (end == length || text[end] != ';' || !appendReference(result, name))
            throw OXJobRunner_BadFile("\"&" + name +
                                      "\" is no reference; write \"&amp;\" for \"&\"");
        at = end;
    }
    return result;
}

bool parseNumber(const OCAnsiString& text, unsigned int least, unsigned int most,
                 unsigned int& number) {
    if (!isDigits(text, 9))
        return false;
    const unsigned int value = OCUnsignedIntegerConversion::fromString(text, 10);
    if (value < least || value > most)
        return false;
    number = value;
    return true;
}

bool parseSeconds(const OCAnsiString& text, unsigned int& milliseconds) {
    OCAnsiString seconds(text);
    OCAnsiString decimals("0");
    unsigned long point = 0;
    if (text.indexOf('.', point)) {
        seconds.left(point);
        decimals.assign(text.getString() + point + 1, text.getLength() - point - 1);
    }
    if (!isDigits(seconds, 6) || !isDigits(decimals, 3))
        return false;
    decimals.padRight('0', 3);
    const unsigned int total = OCUnsignedIntegerConversion::fromString(seconds, 10) * 1000 +
                               OCUnsignedIntegerConversion::fromString(decimals, 10);
    if (total == 0)
        return false;
    milliseconds = total;
    return true;
}

OCAnsiString formatSeconds(unsigned int milliseconds) {
    return number(milliseconds / 1000) + "." + number(milliseconds % 1000).padLeft('0', 3);
}

OCAnsiString formatTime(const OCDateTime& time) {
    return time.exportText(DateTimeFormatMilitary).trim(); // The form ends with a space.
}

unsigned int elapsedMilliseconds(const OCStopwatch& stopwatch) {
    const double seconds = stopwatch.getTime();
    return seconds > 0 && seconds < 1e6 ? static_cast<unsigned int>(seconds * 1000) : 0;
}

OCUniqueIdentifier makeIdentifier() {
    OCFileStream random("/dev/urandom", FileCreateModeRead, FileShareModeRead);
    OSUniqueIdentifier bytes;
    random.readBuffer(&bytes, sizeof bytes);
    bytes.data3 = static_cast<unsigned short>((bytes.data3 & 0x0fff) | 0x4000);
    bytes.data4[0] = static_cast<unsigned char>((bytes.data4[0] & 0x3f) | 0x80);
    return OCUniqueIdentifier(bytes);
}

OCAnsiString number(unsigned long value) {
    return OCStringConversion::fromSize(value, 10);
}
