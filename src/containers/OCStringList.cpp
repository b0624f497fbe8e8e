#include "OCStringList.h"

#include "OCFileStream.h"
#include "OCMemory.h"
#include "OCStringConversion.h"
#include "OCStringUtilities.h"
#include "containers/OCQuickSort.h"
#include "containers/SortedSearch.h"
#include "core/OCKernels.h"

#include <algorithm>
#include <utility>

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

/// The strings of a list while it is sorted, each with its first characters in a form that compares
/// as numbers, so that most comparisons do not have to fetch the strings themselves.
class SortedStrings {
public:
    struct Entry {
        unsigned long key[2];
        OCAnsiString* string;
    };
    typedef Entry Pivot;

    /// Room for `count` strings.
    SortedStrings(unsigned long count, OEStringCase matching) : entries(nullptr), sense(matching) {
        void* block = nullptr;
        memoryAllocate(block, count * sizeof(Entry));
        entries = static_cast<Entry*>(block);
    }
    SortedStrings(const SortedStrings&) = delete;
    SortedStrings& operator=(const SortedStrings&) = delete;
    ~SortedStrings() {
        void* block = entries;
        memoryRelease(block);
    }

    OCAnsiString& string(unsigned long index) const { return *entries[index].string; }
    void setString(unsigned long index, OCAnsiString& string) {
        char bytes[sizeof Entry::key] = {};
        const unsigned long count = std::min(string.getLength(), sizeof bytes);
        stringCopy(bytes, string.getString(), count);
        if (sense == StringCaseInsensitive)
            orvabase::kernels::foldLower(bytes, bytes, count);
        // Characters count as signed; what a short string lacks is less than any of them.
        for (unsigned long i = 0; i < count; ++i)
            bytes[i] = static_cast<char>(bytes[i] ^ '\x80');
        Entry& entry = entries[index];
        memoryCopy(entry.key, bytes, sizeof bytes);
        entry.key[0] = __builtin_bswap64(entry.key[0]);
        entry.key[1] = __builtin_bswap64(entry.key[1]);
        entry.string = &string;
    }

    Entry pivot(long index) const { return entries[index]; }
    OECompareResult compare(long index, const Entry& pivot) const {
        const Entry& entry = entries[index];
        for (int i = 0; i < 2; ++i) {
            if (entry.key[i] != pivot.key[i])
                return entry.key[i] < pivot.key[i] ? CompareResultLess : CompareResultGreater;
        }
        // A partition always comes across its pivot.
        return entry.string == pivot.string ? CompareResultEqual
                                            : entry.string->compare(*pivot.string, sense);
    }
    void exchange(long a, long b) { std::swap(entries[a], entries[b]); }

private:
    Entry* entries;
    OEStringCase sense;
};

// A list's strings are all over the heap. Those that are looked at soon are fetched meanwhile.

/// From this many strings on a list is sorted by keys; for fewer it does not pay.
constexpr unsigned long keyedFrom = 16;

/// From this many strings on they are put into a sorted list together.
constexpr unsigned long mergedFrom = 256;

/// How many strings ahead a loop over a list fetches their texts, or only what tells their lengths.
constexpr unsigned long textsFetchedAhead = 16;
constexpr unsigned long headsFetchedAhead = 64;

/// Fetches what tells a string's length and where its text is.
void fetchHead(const OCAnsiString* string) {
    if (string != nullptr)
        __builtin_prefetch(reinterpret_cast<const char*>(string + 1) - sizeof(unsigned long));
}

/// Fetches the string and the beginning of its text.
void fetchText(const OCAnsiString* string) {
    fetchHead(string);
    if (string != nullptr)
        __builtin_prefetch(reinterpret_cast<const char*>(string) + sizeof(void*));
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
    swap(copy);
    return *this;
}

void OCStringList::swap(OCStringList& other) noexcept {
    std::swap(listCase, other.listCase);
    std::swap(listMode, other.listMode);
    strings.swap(other.strings);
}

OCStringList& OCStringList::append(const OCStringList& other) {
    OCStringList copies(listCase, StringListModeUnsorted);
    for (unsigned long i = 0; i < other.getCount(); ++i) {
        if (other.hasString(i))
            copies.addString(other.getString(i));
    }
    takeStrings(copies);
    return *this;
}

void OCStringList::takeStrings(OCStringList& source) {
    if (listMode == StringListModeSorted) {
        if (!mergeStrings(source))
            insertStrings(source);
        return;
    }
    const unsigned long count = strings.getCount();
    if (count == 0) {
        strings.swap(source.strings);
        return;
    }
    strings.setCount(count + source.getCount());
    for (unsigned long i = 0; i < source.getCount(); ++i)
        strings.setElement(count + i, source.getString(i));
    source.forgetStrings();
}

bool OCStringList::mergeStrings(OCStringList& source) {
    if (source.getCount() < mergedFrom || !isInOrder(strings))
        return false;
    const unsigned long count = strings.getCount();
    OCVector merged(strings);
    merged.setCount(count + source.getCount());
    for (unsigned long i = 0; i < source.getCount(); ++i)
        merged.setElement(count + i, source.getString(i));
    sortStrings(merged);
    if (hasVariants(merged))
        return false;
    strings.swap(merged);
    source.forgetStrings();
    return true;
}

void OCStringList::insertStrings(OCStringList& source) {
    for (unsigned long i = 0; i < source.getCount(); ++i) {
        insertString(source.getString(i));
        source.strings.nullElement(i);
    }
}

void OCStringList::forgetStrings() {
    OCVector forgotten;
    strings.swap(forgotten);
}

bool OCStringList::isInOrder(const OCVector& vector) const {
    for (unsigned long i = 0; i < vector.getCount(); ++i) {
        if (!vector.hasElement(i))
            return false;
        if (i != 0 && compareFunction()(&vector.getElement(i - 1), &vector.getElement(i)) ==
                          CompareResultGreater)
            return false;
    }
    return true;
}

bool OCStringList::hasVariants(const OCVector& vector) const {
    if (listCase != StringListCaseInsensitive)
        return false;
    for (unsigned long i = 1; i < vector.getCount(); ++i) {
        const OCObject* const a = &vector.getElement(i - 1);
        const OCObject* const b = &vector.getElement(i);
        if (stringListCompareInsensitive(a, b) == CompareResultEqual &&
            stringListCompareSensitive(a, b) != CompareResultEqual)
            return true;
    }
    return false;
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
    if (listMode == StringListModeSorted)
        moveString(index, text);
    else
        putString(index, text);
}

void OCStringList::putString(unsigned long index, const OCAnsiString& text) {
    if (strings.hasElement(index)) {
        static_cast<OCAnsiString&>(strings.getElement(index)) = text;
        return;
    }
    NewString added(text);
    if (index >= strings.getCount()) {
        if (index == ~0UL)
            throw OXMemory_AllocationError();
        strings.setCount(index + 1);
    }
    strings.setElement(index, added.get());
    added.release();
}

void OCStringList::moveString(unsigned long index, const OCAnsiString& text) {
    // The new string comes first: `text` may be the string that it replaces.
    NewString added(text);
    unsigned long place = 0;
    // NOLINTNEXTLINE(readability-suspicious-call-argument): `index` is where `text` may not be
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
    for (unsigned long i = n; i < strings.getCount(); ++i) {
        fetchText(stringIn(strings, i + textsFetchedAhead));
        nullString(i);
    }
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
    unsigned long index = 0;
    return indexOf(text, index);
}

bool OCStringList::indexOfSorted(const OCAnsiString& text, unsigned long& index) const {
    return search(text, index, notSkipped);
}

bool OCStringList::search(const OCAnsiString& text, unsigned long& index,
                          unsigned long skipped) const {
    const OEStringCase sense = getSense();
    const auto orderAt = [&](unsigned long i) {
        const OCAnsiString* const string = stringIn(strings, i < skipped ? i : i + 1);
        return string == nullptr ? CompareResultLess : string->compare(text, sense);
    };
    const auto fetchAt = [&](unsigned long i) { fetchText(stringIn(strings, i)); };
    return orvabase::searchSorted(strings.getCount() - (skipped == notSkipped ? 0 : 1), orderAt,
                                  fetchAt, index);
}

bool OCStringList::indexOfUnsorted(const OCAnsiString& text, unsigned long& index) const {
    for (unsigned long i = 0; i < strings.getCount(); ++i) {
        fetchText(stringIn(strings, i + textsFetchedAhead));
        const OCAnsiString* const string = stringIn(strings, i);
        if (string != nullptr && string->getLength() == text.getLength() &&
            string->compare(text, getSense()) == CompareResultEqual) {
            index = i;
            return true;
        }
    }
    return false;
}

void OCStringList::sort() {
    sortStrings(strings);
}

void OCStringList::sortStrings(OCVector& vector) const {
    if (!sortByKeys(vector))
        vector.sort(compareFunction());
}

bool OCStringList::sortByKeys(OCVector& vector) const {
    const unsigned long count = vector.getCount();
    if (count < keyedFrom || count > ~0UL / sizeof(SortedStrings::Entry))
        return false;
    try {
        SortedStrings sorted(count, getSense());
        for (unsigned long i = 0; i < count; ++i) {
            fetchText(stringIn(vector, i + textsFetchedAhead));
            if (!vector.hasElement(i))
                return false;
            sorted.setString(i, static_cast<OCAnsiString&>(vector.getElement(i)));
        }
        orvabase::OCQuickSort<SortedStrings>(sorted).sort(count);
        for (unsigned long i = 0; i < count; ++i)
            vector.setElement(i, sorted.string(i));
        return true;
    } catch (const OXMemory_AllocationError&) {
        return false;
    }
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
    // From the last to the first: what is filled next begins with what was looked at last.
    unsigned long length = 0;
    for (unsigned long i = list.getCount(); i != 0; --i) {
        fetchHead(OCStringList::stringIn(list.strings, i - 1 - headsFetchedAhead));
        const OCAnsiString* const string = OCStringList::stringIn(list.strings, i - 1);
        // This cannot wrap, as all the texts are in memory.
        length += 2 + (string == nullptr ? 0 : string->getLength());
    }
    return length;
}

void OCStringListUtilities::exportStringBuffer(const OCStringList& list, char* buffer) {
    for (unsigned long i = 0; i < list.getCount(); ++i) {
        fetchText(OCStringList::stringIn(list.strings, i + textsFetchedAhead));
        if (const OCAnsiString* const string = OCStringList::stringIn(list.strings, i)) {
            stringCopy(buffer, string->getString(), string->getLength());
            buffer += string->getLength();
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
    OCStringList lines(list.listCase, StringListModeUnsorted);
    const char* line = text.getString();
    const char* const end = line + text.getLength();
    while (line != end) {
        const auto remaining = static_cast<unsigned long>(end - line);
        unsigned long length = orvabase::kernels::findEither(line, remaining, '\r', '\n');
        if (length == orvabase::kernels::notFound)
            length = remaining;
        lines.addString(line, length);
        line += length;
        if (line != end && *line == '\r')
            ++line;
        if (line != end && *line == '\n')
            ++line;
    }
    // The text may be one of the list's strings, which go away only now.
    OCStringList imported(list.listCase, list.listMode);
    imported.takeStrings(lines);
    list.swap(imported);
}

void OCStringListUtilities::exportStream(const OCStringList& list, OCStream& stream) {
    for (unsigned long i = 0; i < list.getCount(); ++i)
        OCStringUtilities::exportStream(list.getString(i) + "\r\n", stream);
}

void OCStringListUtilities::importStream(OCStringList& list, OCStream& stream) {
    importString(list, OCStringUtilities::importStream(stream));
}
