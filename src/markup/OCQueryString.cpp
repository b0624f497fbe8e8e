#include "OCQueryString.h"

#include "OCMemory.h"
#include "OCStringConversion.h"
#include "core/OCKernels.h"
#include "core/OCKernelsText.h"

#include <utility>

namespace kernels = orvabase::kernels;

namespace {

/// The characters of a text that mean something in a query, one after the other.
class Marks {
public:
    Marks(const char* text, unsigned long count) : block(text), end(text + count) { look(); }

    /// The next one, or the end of the text.
    const char* next() {
        while (marks == 0) {
            if (end - block <= blockSize)
                return end;
            block += blockSize;
            look();
        }
        const char* const mark = block + __builtin_ctzl(marks);
        marks &= marks - 1;
        return mark;
    }

private:
    static constexpr long blockSize = 64;

    void look() {
        const long rest = end - block;
        marks = kernels::markQuery(block,
                                   static_cast<unsigned long>(rest < blockSize ? rest : blockSize));
    }

    const char* block;
    const char* end;
    unsigned long marks = 0; // of the block, those that are still to come
};

OCAnsiString decode(const char* text, unsigned long count) {
    OCAnsiString result;
    result.setLength(count);
    result.setLength(kernels::unescape(result.getString(), text, count));
    return result;
}

unsigned long escapedLength(const OCAnsiString& text) {
    return text.getLength() + 2 * kernels::countEscaped(text.getString(), text.getLength());
}

/// Writes texts one behind the other into a string that has room for them.
class Writer {
public:
    explicit Writer(char* start) : to(start) {}

    void write(const char* text, unsigned long count) {
        stringCopy(to, text, count);
        to += count;
    }
    void writeEscaped(const OCAnsiString& text) {
        kernels::escape(to, text.getString(), text.getLength());
        to += escapedLength(text);
    }

private:
    char* to;
};

bool matches(const OCAnsiString& a, const OCAnsiString& b) {
    return a.getLength() == b.getLength() &&
           a.compare(b, StringCaseInsensitive) == CompareResultEqual;
}

/// Owns an element until it has its place in a query.
class NewElement {
public:
    explicit NewElement(OCQueryElement* made) : element(made) {}
    NewElement(const NewElement&) = delete;
    NewElement& operator=(const NewElement&) = delete;
    ~NewElement() { delete element; }

    OCQueryElement& get() const { return *element; }
    void release() { element = nullptr; }

private:
    OCQueryElement* element;
};

} // namespace

OXQueryString::OXQueryString() = default;

OXQueryString::~OXQueryString() noexcept = default;

OXQueryString_NoSuchIndex::OXQueryString_NoSuchIndex(unsigned long index) {
    setClass("OXQueryString_NoSuchIndex");
    setMessage("Query string index out of bounds");
    getDetails().addString(OCStringConversion::fromSize(index, 10));
}

OXQueryString_NoSuchIndex::~OXQueryString_NoSuchIndex() noexcept = default;

OXQueryString_NoSuchName::OXQueryString_NoSuchName(const OCAnsiString& name) {
    setClass("OXQueryString_NoSuchName");
    setMessage("Query element does not exist");
    getDetails().addString(name);
}

OXQueryString_NoSuchName::~OXQueryString_NoSuchName() noexcept = default;

// Elements

OCQueryElement::OCQueryElement(const Piece& nameForm, const Piece& valueForm)
    : name(nameForm.decoded()), value(valueForm.decoded()) {}

OCAnsiString OCQueryElement::Piece::decoded() const {
    const auto count = static_cast<unsigned long>(end - begin);
    return encoded ? decode(begin, count) : OCAnsiString(begin, count);
}

OCQueryElement::~OCQueryElement() noexcept = default;

OCQueryElement& OCQueryElement::assign(const OCQueryElement& other) {
    OCAnsiString newValue(other.value);
    name = other.name;
    value = std::move(newValue);
    return *this;
}

// Construction and assignment

OCQueryString::OCQueryString(const OCAnsiString& text) : OCQueryString() {
    parse(text.getString(), text.getLength());
}

OCQueryString::OCQueryString(const OCQueryString& other) : OCQueryString() {
    elements.setCount(other.getCount());
    for (unsigned long i = 0; i < other.getCount(); ++i)
        elements.setElement(i, *new OCQueryElement(other.getElement(i)));
}

OCQueryString::~OCQueryString() noexcept {
    deleteElements();
}

OCQueryString& OCQueryString::operator=(OCQueryString&& other) noexcept {
    if (this != &other) {
        clear();
        swap(other);
    }
    return *this;
}

OCQueryString& OCQueryString::assign(const OCQueryString& other) {
    if (this != &other) {
        OCQueryString copy(other);
        swap(copy);
    }
    return *this;
}

OCQueryString& OCQueryString::assign(const OCAnsiString& text) {
    OCQueryString parsed(text);
    swap(parsed);
    return *this;
}

void OCQueryString::swap(OCQueryString& other) noexcept {
    elements.swap(other.elements);
}

void OCQueryString::clear() noexcept {
    OCQueryString removed;
    swap(removed);
}

void OCQueryString::deleteElements() noexcept {
    for (unsigned long i = 0; i < elements.getCount(); ++i) {
        if (elements.hasElement(i))
            delete &elements.getElement(i);
    }
}

// Text

void OCQueryString::parse(const char* text, unsigned long count) {
    typedef OCQueryElement::Piece Piece;
    const char* const end = text + count;
    Marks marks(text, count);
    for (const char* at = text; at != end;) {
        Piece name{at, nullptr, false};
        Piece value{nullptr, nullptr, false};
        const char* mark = marks.next();
        for (; mark != end && *mark != '&'; mark = marks.next()) {
            if (*mark != '=')
                (value.begin == nullptr ? name : value).encoded = true;
            else if (value.begin == nullptr) {
                name.end = mark;
                value.begin = mark + 1;
            }
        }
        (value.begin == nullptr ? name : value).end = mark;
        if (name.end != at)
            addParsed(new OCQueryElement(name, value));
        at = mark == end ? end : mark + 1;
    }
}

OCAnsiString OCQueryString::getText(OEQueryStringFormat format) const {
    const OCAnsiString separator(format == QueryStringFormatHtml ? "&amp;" : "&");
    unsigned long total = 0;
    for (unsigned long i = 0; i < getCount(); ++i) {
        const OCQueryElement& element = getElement(i);
        total += i == 0 ? 0 : separator.getLength();
        total += escapedLength(element.getName());
        if (element.getValue().getLength() != 0)
            total += 1 + escapedLength(element.getValue());
    }
    OCAnsiString text;
    text.setLength(total);
    Writer writer(text.getString());
    for (unsigned long i = 0; i < getCount(); ++i) {
        const OCQueryElement& element = getElement(i);
        if (i != 0)
            writer.write(separator.getString(), separator.getLength());
        writer.writeEscaped(element.getName());
        if (element.getValue().getLength() != 0) {
            writer.write("=", 1);
            writer.writeEscaped(element.getValue());
        }
    }
    return text;
}

// Changes

/// Takes ownership, also when it throws; the last slot may be a null one then.
void OCQueryString::addParsed(OCQueryElement* added) {
    NewElement element(added);
    elements.addElement(element.get());
    element.release();
}

/// Takes ownership, also when it throws.
void OCQueryString::appendElement(OCQueryElement* added) {
    NewElement element(added);
    const unsigned long index = getCount();
    elements.setCount(index + 1);
    elements.setElement(index, element.get());
    element.release();
}

void OCQueryString::addElement(const OCAnsiString& name, const OCAnsiString& value) {
    appendElement(new OCQueryElement(name, value));
}

void OCQueryString::setValue(const OCAnsiString& name, const OCAnsiString& value) {
    switch (countElement(name)) {
    case 0:
        addElement(name, value);
        break;
    case 1:
        getElement(name).setValue(value);
        break;
    default: {
        NewElement element(new OCQueryElement(name, value));
        replaceElements(name, &element.get());
        element.release();
    }
    }
}

/// Removes the elements of a name, and appends `successor` unless it is null.
void OCQueryString::replaceElements(const OCAnsiString& name, OCQueryElement* successor) {
    const unsigned long kept = getCount() - countElement(name);
    OCQueryString result; // owns nothing until nothing can fail any more
    result.elements.setCount(kept + (successor == nullptr ? 0 : 1));
    unsigned long place = 0;
    for (unsigned long i = 0; i < getCount(); ++i) {
        if (!matches(getName(i), name)) {
            result.elements.setElement(place++, elements.getElement(i));
            elements.nullElement(i);
        }
    }
    if (successor != nullptr)
        result.elements.setElement(kept, *successor);
    swap(result);
}

void OCQueryString::removeElement(unsigned long index) {
    OCObject* const removed = &getElement(index);
    elements.removeElement(index);
    OCObjectDisposer disposer(removed);
}

void OCQueryString::removeElement(const OCAnsiString& name) {
    if (contains(name))
        replaceElements(name, nullptr);
}

// Look-up

void OCQueryString::throwNoSuchIndex(unsigned long index) {
    throw OXQueryString_NoSuchIndex(index);
}

OCQueryElement& OCQueryString::getElement(const OCAnsiString& name) {
    unsigned long index = 0;
    if (!indexOf(name, index))
        throw OXQueryString_NoSuchName(name);
    return getElement(index);
}

const OCQueryElement& OCQueryString::getElement(const OCAnsiString& name) const {
    unsigned long index = 0;
    if (!indexOf(name, index))
        throw OXQueryString_NoSuchName(name);
    return getElement(index);
}

OCAnsiString OCQueryString::getValue(const OCAnsiString& name,
                                     const OCAnsiString& defaultValue) const {
    unsigned long index = 0;
    return indexOf(name, index) ? getValue(index) : defaultValue;
}

bool OCQueryString::contains(const OCAnsiString& name) const {
    unsigned long index = 0;
    return indexOf(name, index);
}

unsigned long OCQueryString::countElement(const OCAnsiString& name) const {
    unsigned long count = 0;
    for (unsigned long i = 0; i < getCount(); ++i)
        count += matches(getName(i), name) ? 1UL : 0UL;
    return count;
}

bool OCQueryString::indexOf(const OCAnsiString& name, unsigned long& index) const {
    for (unsigned long i = 0; i < getCount(); ++i) {
        if (matches(getName(i), name)) {
            index = i;
            return true;
        }
    }
    return false;
}
