#ifndef ORVABASE_OCCORERING_H
#include "OCCoreRing.h" // comes back here for each of the two halves
#elif ORVABASE_CORE_RING_HALF == 1

class OCFilePath;
class OCStream;

/// How a string list orders and matches its strings. Any value but 0 is sensitive.
enum OEStringListCase : int { StringListCaseInsensitive = 0, StringListCaseSensitive = 1 };

/// Whether a string list keeps itself sorted. Only 1 is sorted.
enum OEStringListMode : int { StringListModeUnsorted = 0, StringListModeSorted = 1 };

/// The comparison functions of string lists, for vectors of `OCAnsiString`: null is less than any
/// string and equal to null.
ORVABASE_EXPORT OECompareResult stringListCompareSensitive(const OCObject* a, const OCObject* b);
ORVABASE_EXPORT OECompareResult stringListCompareInsensitive(const OCObject* a, const OCObject* b);

/// A list of strings that owns them, in insertion order or kept sorted (look-ups are binary
/// searches then).
///
/// It holds copies of what it is given. A slot may be null: `setCount` makes such slots. Not for
/// use by several threads at once.
///
///     OCStringList names(StringListCaseInsensitive, StringListModeSorted);
///     names += "beta";
///     names += "Alpha";
///     names.getString(0);           // Alpha
///     names.contains("BETA");       // true
class ORVABASE_EXPORT OCStringList : public OCObject {
public:
    /// An empty list.
    OCStringList(OEStringListCase matching, OEStringListMode order) noexcept
        : listCase(matching), listMode(order) {}
    /// A deep copy, by `assign`.
    OCStringList(const OCStringList& other);
    OCStringList& operator=(const OCStringList& other) { return assign(other); }
    ~OCStringList() noexcept override;

    /// Takes `other`'s case, mode and copies of its strings; null slots are not copied.
    /// @throws OXMemory_AllocationError when memory is exhausted; nothing is changed then.
    OCStringList& assign(const OCStringList& other);
    /// Adds copies of `other`'s strings in order, each at its place in a sorted list; null slots
    /// are skipped. A list appended to itself doubles what it held.
    /// @throws OXMemory_AllocationError when memory is exhausted; a part may then have been added
    /// to a sorted list.
    OCStringList& append(const OCStringList& other);

    /// Adds a copy of `text`: at its place in a sorted list (before an equal string), at the end of
    /// an unsorted one.
    /// @throws OXMemory_AllocationError when memory is exhausted. Note: when it is the array of
    /// slots that cannot grow, a string that belongs at the end leaves a null slot behind.
    void addString(const OCAnsiString& text);
    OCStringList& operator+=(const OCAnsiString& text) {
        addString(text);
        return *this;
    }

    /// The number of slots, null slots included.
    unsigned long getCount() const { return strings.getCount(); }
    /// How the list matches, and whether it sorts itself.
    OEStringListCase getCase() const { return listCase; }
    OEStringListMode getMode() const { return listMode; }
    /// Whether `index` is below the count and its slot is not null.
    bool hasString(unsigned long index) const { return strings.hasElement(index); }

    /// The string at `index`; the reference lasts until the string is removed or replaced.
    /// @throws OXStringList_NoSuchIndex, OXStringList_NullString
    OCAnsiString& getString(unsigned long index) {
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): the list's own string
        return const_cast<OCAnsiString&>(static_cast<const OCStringList*>(this)->getString(index));
    }
    const OCAnsiString& getString(unsigned long index) const {
        const OCAnsiString* const string = stringIn(strings, index);
        if (string == nullptr)
            throwMissingString(index);
        return *string;
    }

    /// Replaces the string at `index` by a copy of `text`. In a sorted list it moves to its place.
    ///
    /// Note: a bad index is reported by the vector's exception.
    /// @throws OXVector_NoSuchIndex, OXMemory_AllocationError
    void setString(unsigned long index, const OCAnsiString& text);
    /// Removes slot `index` and deletes its string, if it has one.
    ///
    /// Note: a bad index is reported by the vector's exception.
    /// @throws OXVector_NoSuchIndex, and OXMemory_AllocationError when the array of slots cannot be
    /// made smaller; nothing is changed then.
    void removeString(unsigned long index);
    /// Deletes the string at `index` and leaves a null slot; a slot that is null or does not exist
    /// is ignored.
    void nullString(unsigned long index);
    /// Drops the slots from `n` on with their strings, or adds null slots up to `n`.
    /// @throws OXMemory_AllocationError when memory is exhausted; slots that were to be dropped are
    /// null then.
    void setCount(unsigned long n);
    /// Deletes all strings.
    void clear() { setCount(0); }

    /// Looks `text` up: true and its index, or false. On false the index is 0 for an empty list,
    /// the place where the text would be inserted for a sorted one, and untouched for an unsorted
    /// one. With duplicates in a sorted list, any of them may be the one reported.
    bool indexOf(const OCAnsiString& text, unsigned long& index) const;
    bool contains(const OCAnsiString& text) const;

    /// Sorts the strings by `compareFunction()`. It does not make the list a sorted one. For the
    /// time of the sort it takes 24 bytes a string, if it can get them.
    /// @throws OXVector_NullElement when a slot is null; the list is then partly sorted.
    void sort();
    /// The comparison function of the list's case.
    OCVector::Comparator compareFunction() const {
        return listCase == StringListCaseInsensitive ? stringListCompareInsensitive
                                                     : stringListCompareSensitive;
    }

    /// Replaces the list by the lines of the stream, from its position to its end.
    /// @throws OXMemory_AllocationError and whatever the stream throws; the list is not changed
    /// then.
    void loadFromStream(OCStream& stream);
    /// Writes every string with a line end (CR LF), with one write a line.
    /// @throws OXStringList_NullString when a slot is null (the lines before it are written then),
    /// and whatever the stream throws.
    void saveToStream(OCStream& stream) const;
    /// Replaces the list by the lines of a file.
    /// @throws OXFileStream_CreateError, OXHandleStream_ReadError, OXMemory_AllocationError; the
    /// list is not changed then.
    void loadFromFile(const OCFilePath& path);
    /// Writes every string with a line end (CR LF) to a file, which is created or emptied.
    /// @throws OXFileStream_CreateError, OXHandleStream_WriteError, OXStringList_NullString
    void saveToFile(const OCFilePath& path) const;

    /// The two ways of looking a text up, whatever the list's mode: a binary search, in which a
    /// null slot counts as less than any text, and a linear one, which skips null slots.
    bool indexOfSorted(const OCAnsiString& text, unsigned long& index) const;
    bool indexOfUnsorted(const OCAnsiString& text, unsigned long& index) const;

private:
    friend class OCStringListUtilities;
    friend class OCStringTableRow;

    static constexpr unsigned long notSkipped = ~0UL;

    [[noreturn]] void throwMissingString(unsigned long index) const;
    OEStringCase getSense() const {
        return listCase == StringListCaseInsensitive ? StringCaseInsensitive : StringCaseSensitive;
    }
    /// The string at `index` of a vector of strings, or null.
    static const OCAnsiString* stringIn(const OCVector& vector, unsigned long index) {
        return vector.hasElement(index) ? static_cast<const OCAnsiString*>(vector.elements[index])
                                        : nullptr;
    }

    void swap(OCStringList& other) noexcept;
    void addString(const char* text, unsigned long count);
    /// Replaces the string at `index` of an unsorted list, which gets null slots up to there if it
    /// has fewer. Changes nothing when it throws.
    void putString(unsigned long index, const OCAnsiString& text);
    /// Gives `string` its place; it is the list's own when this returns.
    void insertString(OCAnsiString& string);
    /// Takes the strings of `source`, which has no null slots, in their order.
    void takeStrings(OCStringList& source);
    void insertStrings(OCStringList& source);
    /// Takes the strings of `source` all at once, if that comes to the same; otherwise does nothing
    /// and returns false.
    bool mergeStrings(OCStringList& source);
    /// Drops all slots without deleting their strings.
    void forgetStrings();
    /// Whether the vector has no null slots and is sorted.
    bool isInOrder(const OCVector& vector) const;
    /// Whether neighbours in a sorted vector are equal to the list, but not the same.
    bool hasVariants(const OCVector& vector) const;
    void sortStrings(OCVector& vector) const;
    /// Sorts by the strings' first characters where possible; false when nothing is done.
    bool sortByKeys(OCVector& vector) const;
    /// Replaces the string at `index` and moves it to its place, in the slots that the list has.
    void moveString(unsigned long index, const OCAnsiString& text);
    void copySlot(unsigned long to, unsigned long from);
    /// The binary search, in the list without slot `skipped`.
    bool search(const OCAnsiString& text, unsigned long& index, unsigned long skipped) const;

    OEStringListCase listCase;
    OEStringListMode listMode;
    OCVector strings;
};

/// Turns string lists into line-oriented text and back. Lines are written with CR LF; CR LF, CR and
/// LF each end a line that is read.
///
///     OCStringListUtilities::importString(list, "one\r\ntwo\nthree");   // three strings
///     OCStringListUtilities::exportString(list);   // each of them with "\r\n" behind it
class ORVABASE_EXPORT OCStringListUtilities : public OCObject {
public:
    OCStringListUtilities() = delete;

    /// Every string followed by CR LF, the last one too. The result is sized first and filled then.
    /// Null slots have no text; their two bytes of line end are still there.
    /// @throws OXMemory_AllocationError
    static OCAnsiString exportString(const OCStringList& list);
    /// The two steps of `exportString`: the length in bytes, and filling a buffer of that length
    /// (without a terminator).
    static unsigned long exportStringLength(const OCStringList& list);
    static void exportStringBuffer(const OCStringList& list, char* buffer);
    /// Writes every string, followed by CR LF, with one write a line.
    /// @throws OXStringList_NullString when a slot is null.
    static void exportStream(const OCStringList& list, OCStream& stream);
    /// Replaces the list by the lines of `text`. A line end at the end of the text makes no further
    /// line.
    /// @throws OXMemory_AllocationError when memory is exhausted; nothing is changed then.
    static void importString(OCStringList& list, const OCAnsiString& text);
    /// Replaces the list by the lines of the stream, from its position to its end.
    /// @throws OXMemory_AllocationError and whatever the stream throws; the list is not changed
    /// then.
    static void importStream(OCStringList& list, OCStream& stream);
};

#elif ORVABASE_CORE_RING_HALF == 2

/// The family of the string list's failures.
class ORVABASE_EXPORT OXStringList : public OXAutoException {
public:
    ~OXStringList() noexcept override;

protected:
    OXStringList();
};

/// "String list index out of bounds", with the index.
class ORVABASE_EXPORT OXStringList_NoSuchIndex : public OXStringList {
public:
    explicit OXStringList_NoSuchIndex(unsigned long index);
    ~OXStringList_NoSuchIndex() noexcept override;
};

/// "The string list does not contain the requested string", with the index.
class ORVABASE_EXPORT OXStringList_NullString : public OXStringList {
public:
    explicit OXStringList_NullString(unsigned long index);
    ~OXStringList_NullString() noexcept override;
};

#endif
