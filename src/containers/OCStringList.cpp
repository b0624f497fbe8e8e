#include "OCStringList.h"

#include "OCFileStream.h"
#include "OCMemory.h"
#include "OCStringConversion.h"
#include "OCStringUtilities.h"
#include "core/OCKernels.h"

OXStringList::OXStringList() = default;

OXStringList::~OXStringList() noexcept = default;

OXStringList_NoSuchIndex::OXStringList_NoSuchIndex(unsigned long index) {
    setClass("OXStringList_NoSuchIndex");
    setMessage("String list index out of bounds");
    getDetails().addString(OCStringConversion::fromSize(index, 10));
}

OXStringList_NoSuchIndex::~OXStringList_NoSuchIndex() noexcept = default;

OXStringList_NullString::OXStringList_NullString(unsigned long index) {
    setClass("OXStringList_NullString");
    setMessage("The string list does not contain the requested string");
    getDetails().addString(OCStringConversion::fromSize(index, 10));
}

OXStringList_NullString::~OXStringList_NullString() noexcept = default;

namespace {

OECompareResult compareStrings(const OCObject* a, const OCObject* b, OEStringCase sense) {
    if (a == nullptr || b == nullptr) {
        if (a == b)
            return CompareResultEqual;
        return a == nullptr ? CompareResultLess : CompareResultGreater;
    }
    return static_cast<const OCAnsiString*>(a)->compare(*static_cast<const OCAnsiString*>(b),
                                                        sense);
}

/// Owns a string until it has its place in a list.
class NewString {
public:
    explicit NewString(const OCAnsiString& text) : string(new OCAnsiString(text)) {}
    NewString(const char* text, unsigned long count) : string(new OCAnsiString(text, count)) {}
    NewString(const NewString&) = delete;
    NewString& operator=(const NewString&) = delete;
    ~NewString() { delete string; }

    OCAnsiString& get() const { return *string; }
    void release() { string = nullptr; }

private:
    OCAnsiString* string;
};

} // namespace

OECompareResult stringListCompareSensitive(const OCObject* a, const OCObject* b) {
    return compareStrings(a, b, StringCaseSensitive);
}

OECompareResult stringListCompareInsensitive(const OCObject* a, const OCObject* b) {
    return compareStrings(a, b, StringCaseInsensitive);
}

OCStringList::OCStringList(const OCStringList& other)
    : OCStringList(other.listCase, other.listMode) {
    append(other);
}

OCStringList::~OCStringList() noexcept {
    try {
        clear();
    } catch (...) {
        // The strings are gone; only the array of slots could not be made smaller.
    }
}

OCStringList& OCStringList::assign(const OCStringList& other) {
    if (this == &other)
        return *this;
    OCStringList copy(other);
    listCase = copy.listCase;
    listMode = copy.listMode;
    strings.swap(copy.strings);
    return *this;
}

OCStringList& OCStringList::append(const OCStringList& other) {
    if (this == &other) {
        const OCVector snapshot(strings);
        appendStrings(snapshot);
    } else {
        appendStrings(other.strings);
    }
    return *this;
}

void OCStringList::appendStrings(const OCVector& source) {
    const unsigned long count = source.getCount();
    for (unsigned long i = 0; i < count; ++i) {
        if (source.hasElement(i))
            addString(static_cast<const OCAnsiString&>(source.getElement(i)));
    }
}

void OCStringList::addString(const OCAnsiString& text) {
    NewString added(text);
    insertString(added.get());
    added.release();
}

void OCStringList::addString(const char* text, unsigned long count) {
    NewString added(text, count);
    insertString(added.get());
    added.release();
}

void OCStringList::insertString(OCAnsiString& string) {
    unsigned long index = strings.getCount();
    if (listMode == StringListModeSorted)
        search(string, index, notSkipped);
    if (index < strings.getCount())
        strings.insertElement(index, string);
    else
        strings.addElement(string);
}

void OCStringList::throwMissingString(unsigned long index) const {
    if (index >= strings.getCount())
        throw OXStringList_NoSuchIndex(index);
    throw OXStringList_NullString(index);
}

void OCStringList::setString(unsigned long index, const OCAnsiString& text) {
    if (index >= strings.getCount())
        OCVector::throwNoSuchIndex(index);
    if (listMode == StringListModeSorted) {
        moveString(index, text);
    } else if (strings.hasElement(index)) {
        static_cast<OCAnsiString&>(strings.getElement(index)) = text;
    } else {
        NewString added(text);
        strings.setElement(index, added.get());
        added.release();
    }
}

void OCStringList::moveString(unsigned long index, const OCAnsiString& text) {
    // The new string comes first: `text` may be the string that it replaces.
    NewString added(text);
    unsigned long place;
    search(text, place, index);
    // After a growth that failed there are fewer slots than the count says.
    if (strings.getCapacity() < strings.getCount())
        strings.setCapacity(strings.getCount());
    OCObject* const replaced = strings.hasElement(index) ? &strings.getElement(index) : nullptr;
    for (; index < place; ++index)
        copySlot(index, index + 1);
    for (; index > place; --index)
        copySlot(index, index - 1);
    strings.setElement(place, added.get());
    added.release();
    OCObjectDisposer disposer(replaced);
}

void OCStringList::copySlot(unsigned long to, unsigned long from) {
    if (strings.hasElement(from))
        strings.setElement(to, strings.getElement(from));
    else
        strings.nullElement(to);
}

void OCStringList::removeString(unsigned long index) {
    OCObject* const removed = strings.hasElement(index) ? &strings.getElement(index) : nullptr;
    strings.removeElement(index);
    OCObjectDisposer disposer(removed);
}

void OCStringList::nullString(unsigned long index) {
    if (!strings.hasElement(index))
        return;
    OCObject* const removed = &strings.getElement(index);
    strings.nullElement(index);
    OCObjectDisposer disposer(removed);
}

void OCStringList::setCount(unsigned long n) {
    for (unsigned long i = n; i < strings.getCount(); ++i)
        nullString(i);
    strings.setCount(n);
}

bool OCStringList::indexOf(const OCAnsiString& text, unsigned long& index) const {
    if (strings.getCount() == 0) {
        index = 0;
        return false;
    }
    return listMode == StringListModeSorted ? indexOfSorted(text, index)
                                            : indexOfUnsorted(text, index);
}

bool OCStringList::contains(const OCAnsiString& text) const {
    unsigned long index;
    return indexOf(text, index);
}

bool OCStringList::indexOfSorted(const OCAnsiString& text, unsigned long& index) const {
    return search(text, index, notSkipped);
}

bool OCStringList::search(const OCAnsiString& text, unsigned long& index,
                          unsigned long skipped) const {
    const OEStringCase sense = getSense();
    unsigned long low = 0;
    unsigned long high = strings.getCount() - (skipped == notSkipped ? 0 : 1);
    while (low < high) {
        // The middle of `low` and the last index, which is one below `high`.
        const unsigned long middle = low + (high - 1 - low) / 2;
        const unsigned long slot = middle < skipped ? middle : middle + 1;
        OECompareResult result = CompareResultLess;
        if (strings.hasElement(slot)) {
            result =
                static_cast<const OCAnsiString&>(strings.getElement(slot)).compare(text, sense);
            if (result == CompareResultEqual) {
                index = middle;
                return true;
            }
        }
        if (result == CompareResultLess)
            low = middle + 1;
        else
            high = middle;
    }
    index = low;
    return false;
}

bool OCStringList::indexOfUnsorted(const OCAnsiString& text, unsigned long& index) const {
    const OEStringCase sense = getSense();
    for (unsigned long i = 0; i < strings.getCount(); ++i) {
        if (strings.hasElement(i) &&
            static_cast<const OCAnsiString&>(strings.getElement(i)).compare(text, sense) ==
                CompareResultEqual) {
            index = i;
            return true;
        }
    }
    return false;
}

void OCStringList::sort() {
    strings.sort(compareFunction());
}

void OCStringList::loadFromStream(OCStream& stream) {
    OCStringListUtilities::importStream(*this, stream);
}

void OCStringList::saveToStream(OCStream& stream) const {
    OCStringListUtilities::exportStream(*this, stream);
}

void OCStringList::loadFromFile(const OCFilePath& path) {
    OCFileStream stream(path, FileCreateModeRead, FileShareModeRead);
    loadFromStream(stream);
}

void OCStringList::saveToFile(const OCFilePath& path) const {
    OCFileStream stream(path, FileCreateModeCreate, FileShareModeReadWrite);
    saveToStream(stream);
}

unsigned long OCStringListUtilities::exportStringLength(const OCStringList& list) {
    unsigned long length = 0;
    for (unsigned long i = 0; i < list.getCount(); ++i) {
        const unsigned long added = 2 + (list.hasString(i) ? list.getString(i).getLength() : 0);
        if (added > ~0UL - length)
            throw OXMemory_AllocationError();
        length += added;
    }
    return length;
}

void OCStringListUtilities::exportStringBuffer(const OCStringList& list, char* buffer) {
    for (unsigned long i = 0; i < list.getCount(); ++i) {
        if (list.hasString(i)) {
            const OCAnsiString& string = list.getString(i);
            stringCopy(buffer, string.getString(), string.getLength());
            buffer += string.getLength();
        }
        *buffer++ = '\r';
        *buffer++ = '\n';
    }
}

OCAnsiString OCStringListUtilities::exportString(const OCStringList& list) {
    OCAnsiString text;
    text.setLength(exportStringLength(list));
    exportStringBuffer(list, text.getString());
    return text;
}

void OCStringListUtilities::importString(OCStringList& list, const OCAnsiString& text) {
    for (unsigned long i = 0; i < list.getCount(); ++i) {
        if (list.hasString(i) && &list.getString(i) == &text) {
            // The text goes away with the list's strings.
            const OCAnsiString copy(text);
            importString(list, copy);
            return;
        }
    }

    list.clear();
    const char* line = text.getString();
    const char* const end = line + text.getLength();
    while (line != end) {
        const auto remaining = static_cast<unsigned long>(end - line);
        unsigned long length = orvabase::kernels::findEither(line, remaining, '\r', '\n');
        if (length == orvabase::kernels::notFound)
            length = remaining;
        list.addString(line, length);
        line += length;
        if (line != end && *line == '\r')
            ++line;
        if (line != end && *line == '\n')
            ++line;
    }
}

void OCStringListUtilities::exportStream(const OCStringList& list, OCStream& stream) {
    for (unsigned long i = 0; i < list.getCount(); ++i)
        OCStringUtilities::exportStream(list.getString(i) + "\r\n", stream);
}

void OCStringListUtilities::importStream(OCStringList& list, OCStream& stream) {
    importString(list, OCStringUtilities::importStream(stream));
}
