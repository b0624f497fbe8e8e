#include "OCNamedList.h"

#include "OCMemory.h"
#include "OCStringConversion.h"
#include "containers/OCQuickSort.h"
#include "containers/SortedSearch.h"

#include <algorithm>
#include <memory>
#include <typeinfo>
#include <utility>

OXNamedList::OXNamedList() = default;

OXNamedList::~OXNamedList() noexcept = default;

OXNamedList_NoSuchIndex::OXNamedList_NoSuchIndex(unsigned long index) {
    setClass("OXNamedList_NoSuchIndex");
    setMessage("Named element index out of bounds");
    getDetails().addString(OCStringConversion::fromSize(index, 10));
}

OXNamedList_NoSuchIndex::~OXNamedList_NoSuchIndex() noexcept = default;

OXNamedList_NoSuchName::OXNamedList_NoSuchName(const OCAnsiString& name) {
    setClass("OXNamedList_NoSuchName");
    setMessage("Named element does not exist");
    getDetails().addString(name);
}

OXNamedList_NoSuchName::~OXNamedList_NoSuchName() noexcept = default;

namespace {

const OCNamedElement& asElement(const OCObject* object) {
    const OCNamedElement* const element = dynamic_cast<const OCNamedElement*>(object);
    if (element == nullptr)
        throw std::bad_cast();
    return *element;
}

/// From this many names on it pays to sort an unsorted list's own names before they are looked up.
constexpr unsigned long sortedFrom = 16;

/// How many elements ahead a loop over a list fetches their names.
constexpr unsigned long namesFetchedAhead = 16;

/// Fetches a name's length and, when it is short, its text.
void fetchName(const OCAnsiString& name) {
    __builtin_prefetch(&name);
    __builtin_prefetch(reinterpret_cast<const char*>(&name + 1) - 1);
}

/// An array of plain values for the time of an operation; they have no defined value at first.
template<class Value>
class Scratch {
public:
    explicit Scratch(unsigned long count) : block(nullptr) {
        if (count > ~0UL / sizeof(Value))
            throw OXMemory_AllocationError();
        memoryAllocate(block, count * sizeof(Value));
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    ~Scratch() { memoryRelease(block); }

    Value& operator[](unsigned long index) { return static_cast<Value*>(block)[index]; }

private:
    void* block;
};

/// An element of a list and its index there.
struct Occurrence {
    const OCNamedElement* element;
    unsigned long index;
};

/// A list's elements ordered by name, those of one name by index.
class Occurrences {
public:
    typedef Occurrence Pivot;

    Occurrences(const OCNamedList& list, OEStringCase matching)
        : entries(list.getCount()), count(list.getCount()), sense(matching) {
        for (unsigned long i = 0; i < count; ++i)
            entries[i] = {&list.getElement(i), i};
        if (count > 1)
            orvabase::OCQuickSort<Occurrences>(*this).sort(count);
    }

    unsigned long getCount() const { return count; }
    const Occurrence& operator[](unsigned long i) { return entries[i]; }
    const OCAnsiString& name(unsigned long i) { return entries[i].element->getName(); }
    /// The end of those that have the name of entry `i`.
    unsigned long endOfName(unsigned long i) {
        unsigned long end = i + 1;
        while (end < count && name(end).compare(name(i), sense) == CompareResultEqual)
            ++end;
        return end;
    }

    Pivot pivot(long i) { return entries[static_cast<unsigned long>(i)]; }
    OECompareResult compare(long i, const Pivot& other) {
        const Occurrence& entry = entries[static_cast<unsigned long>(i)];
        const OECompareResult result =
            entry.element->getName().compare(other.element->getName(), sense);
        if (result != CompareResultEqual || entry.index == other.index)
            return result;
        return entry.index < other.index ? CompareResultLess : CompareResultGreater;
    }
    void exchange(long a, long b) {
        std::swap(entries[static_cast<unsigned long>(a)], entries[static_cast<unsigned long>(b)]);
    }

private:
    Scratch<Occurrence> entries;
    unsigned long count;
    OEStringCase sense;
};

/// Counts which of a number of places are taken, with logarithmic cost.
class PlaceCounter {
public:
    explicit PlaceCounter(unsigned long places) : sums(places), count(places) {
        for (unsigned long i = 0; i < count; ++i)
            sums[i] = 0;
    }

    void take(unsigned long place) {
        for (unsigned long i = place; i < count; i |= i + 1)
            ++sums[i];
    }
    /// How many places before `place` are taken.
    unsigned long takenBefore(unsigned long place) {
        unsigned long taken = 0;
        for (unsigned long i = place; i != 0; i &= i - 1)
            taken += sums[i - 1];
        return taken;
    }

private:
    Scratch<unsigned long> sums; // a binary indexed tree
    unsigned long count;
};

} // namespace

OECompareResult namedListCompareNamesSensitive(const OCAnsiString& a, const OCAnsiString& b) {
    return a.compare(b, StringCaseSensitive);
}

OECompareResult namedListCompareNamesInsensitive(const OCAnsiString& a, const OCAnsiString& b) {
    return a.compare(b, StringCaseInsensitive);
}

OECompareResult namedListCompareElementsSensitive(const OCObject* a, const OCObject* b) {
    return namedListCompareNamesSensitive(asElement(a).getName(), asElement(b).getName());
}

OECompareResult namedListCompareElementsInsensitive(const OCObject* a, const OCObject* b) {
    return namedListCompareNamesInsensitive(asElement(a).getName(), asElement(b).getName());
}

OCNamedElement::~OCNamedElement() noexcept = default;

OCNamedElement& OCNamedElement::assign(const OCNamedElement& other) {
    OCAnsiString newName(other.name);
    value = other.value;
    name = std::move(newName);
    return *this;
}

OCNamedList::OCNamedList(const OCNamedList& other) : OCNamedList(other.listCase, other.listMode) {
    append(other);
}

OCNamedList::~OCNamedList() noexcept {
    clear();
}

OCNamedList& OCNamedList::assign(const OCNamedList& other) {
    if (this == &other)
        return *this;
    OCNamedList copy(other);
    std::swap(listCase, copy.listCase);
    std::swap(listMode, copy.listMode);
    elements.swap(copy.elements);
    return *this;
}

/// Does what `setValue` of every element of a list in turn would do, in two steps: the first makes
/// all that is needed and may fail, the second changes the list.
///
/// The names are taken in their order, so that each has to be looked up only once, and all new
/// elements get their places in one pass.
class OCNamedList::Merge {
public:
    Merge(OCNamedList& target, const OCNamedList& source)
        : list(target), occurrences(source, target.getSense()), changes(source.getCount()),
          changeCount(0), newCount(0), inTurn(source.getCount()) {}
    Merge(const Merge&) = delete;
    Merge& operator=(const Merge&) = delete;
    ~Merge() {
        for (unsigned long i = 0; i < changeCount; ++i)
            delete changes[i].made;
    }

    void prepare() {
        if (list.listMode == NamedListModeSorted)
            findSorted();
        else
            findUnsorted();
        noteTurns();
        if (list.listMode == NamedListModeSorted)
            chooseEquals();
        list.elements.setCount(list.getCount() + newCount);
    }

    void apply() noexcept {
        for (unsigned long i = 0; i < changeCount; ++i) {
            if (changes[i].changed != nullptr)
                changes[i].changed->value = std::move(changes[i].made->value);
        }
        if (list.listMode == NamedListModeSorted)
            placeSorted();
        else
            placeUnsorted();
    }

private:
    /// What becomes of a name, or of one occurrence of it.
    struct Change {
        OCNamedElement* made;    ///< the new element, or the one with the new value
        OCNamedElement* changed; ///< the element of the list that gets the value, if there is one
        unsigned long turn;      ///< when its turn would be
        unsigned long place;     ///< where its name is or would be in a sorted list
        unsigned long equals;    ///< how many elements of a sorted list have its name
    };
    static constexpr unsigned long noChange = ~0UL;

    /// The changes for the occurrences from `first` up to before `last`, which have one name. That
    /// name has `equals` elements from `place` on.
    void addChanges(unsigned long first, unsigned long last, unsigned long place,
                    unsigned long equals) {
        if (equals > 1) {
            // Each turn may find another one of them.
            for (; first != last; ++first)
                addChange(first, first, place, equals);
        } else {
            addChange(first, last - 1, place, equals);
        }
    }
    void addChange(unsigned long named, unsigned long valued, unsigned long place,
                   unsigned long equals) {
        OCNamedElement* const made =
            new OCNamedElement(occurrences.name(named), occurrences[valued].element->getValue());
        OCNamedElement* const changed = equals == 0 ? nullptr : &list.elementAt(place);
        changes[changeCount] = {made, changed, occurrences[named].index, place, equals};
        ++changeCount;
        newCount += equals == 0;
    }

    void findSorted() {
        unsigned long place = 0;
        for (unsigned long i = 0, end = 0; i < occurrences.getCount(); i = end) {
            end = occurrences.endOfName(i);
            unsigned long first = 0;
            if (list.indexOf(occurrences.name(i), first)) {
                unsigned long last = 0;
                list.equalRange(first, first, last);
                addChanges(i, end, first, last - first);
            } else {
                // In a list that is out of order, the places must be in order all the same.
                place = std::max(place, first);
                addChanges(i, end, place, 0);
            }
        }
    }

    void findUnsorted() {
        if (occurrences.getCount() < sortedFrom) {
            for (unsigned long i = 0, end = 0; i < occurrences.getCount(); i = end) {
                end = occurrences.endOfName(i);
                unsigned long index = 0;
                const bool found = list.indexOf(occurrences.name(i), index);
                addChanges(i, end, index, found);
            }
            return;
        }
        Occurrences own(list, list.getSense());
        unsigned long next = 0;
        for (unsigned long i = 0, end = 0; i < occurrences.getCount(); i = end) {
            end = occurrences.endOfName(i);
            OECompareResult order = CompareResultGreater;
            while (next < own.getCount() &&
                   (order = own.name(next).compare(occurrences.name(i), list.getSense())) ==
                       CompareResultLess)
                ++next;
            if (next < own.getCount() && order == CompareResultEqual)
                addChanges(i, end, own[next].index, 1);
            else
                addChanges(i, end, 0, 0);
        }
    }

    void noteTurns() {
        for (unsigned long i = 0; i < occurrences.getCount(); ++i)
            inTurn[i] = noChange;
        for (unsigned long i = 0; i < changeCount; ++i)
            inTurn[changes[i].turn] = i;
    }

    /// Finds out which of several elements of one name a binary search would meet, in the list as
    /// it would be when the change has its turn.
    void chooseEquals() {
        if (!hasEquals())
            return;
        PlaceCounter added(changeCount);
        unsigned long count = list.getCount();
        for (unsigned long turn = 0; turn < occurrences.getCount(); ++turn) {
            const unsigned long i = inTurn[turn];
            if (i == noChange)
                continue;
            Change& change = changes[i];
            if (change.equals == 0) {
                added.take(i);
                ++count;
            } else if (change.equals > 1) {
                const unsigned long first = change.place + added.takenBefore(i);
                const unsigned long met = meet(count, first, change.equals);
                change.changed = &list.elementAt(change.place + (met - first));
            }
        }
    }
    bool hasEquals() {
        for (unsigned long i = 0; i < changeCount; ++i) {
            if (changes[i].equals > 1)
                return true;
        }
        return false;
    }
    /// The index where a binary search in `count` elements ends that looks for the `equals` ones
    /// from `first` on.
    static unsigned long meet(unsigned long count, unsigned long first, unsigned long equals) {
        unsigned long met = first;
        orvabase::searchSorted(
            count,
            [=](unsigned long i) {
                if (i < first)
                    return CompareResultLess;
                return i < first + equals ? CompareResultEqual : CompareResultGreater;
            },
            [](unsigned long) {}, met);
        return met;
    }

    void placeSorted() {
        unsigned long to = list.getCount();
        unsigned long from = to - newCount;
        for (unsigned long i = changeCount; to != from; --i) {
            Change& change = changes[i - 1];
            if (change.equals != 0)
                continue;
            while (from > change.place)
                list.elements.setElement(--to, list.elementAt(--from));
            list.elements.setElement(--to, *change.made);
            change.made = nullptr;
        }
    }

    void placeUnsorted() {
        unsigned long to = list.getCount() - newCount;
        for (unsigned long turn = 0; to != list.getCount(); ++turn) {
            if (inTurn[turn] == noChange)
                continue;
            Change& change = changes[inTurn[turn]];
            if (change.equals != 0)
                continue;
            list.elements.setElement(to++, *change.made);
            change.made = nullptr;
        }
    }

    OCNamedList& list;
    Occurrences occurrences;
    Scratch<Change> changes;
    unsigned long changeCount;
    unsigned long newCount;
    /// The change of each turn, if any.
    Scratch<unsigned long> inTurn;
};

OCNamedList& OCNamedList::append(const OCNamedList& other) {
    if (!other.isEmpty()) {
        Merge merge(*this, other);
        merge.prepare();
        merge.apply();
    }
    return *this;
}

void OCNamedList::addElement(const OCAnsiString& name, const OCAnsiString& value) {
    std::unique_ptr<OCNamedElement> added(new OCNamedElement(name, value));
    unsigned long index = getCount();
    if (listMode == NamedListModeSorted)
        indexOf(name, index);
    insertElement(index, *added);
    static_cast<void>(added.release());
}

void OCNamedList::insertElement(unsigned long index, OCNamedElement& element) {
    const unsigned long count = getCount();
    if (index < count) {
        elements.insertElement(index, element);
    } else {
        // In two steps, as an addition that fails would leave a slot.
        elements.setCount(count + 1);
        elements.setElement(count, element);
    }
}

bool OCNamedList::indexOf(const OCAnsiString& name, unsigned long& index) const {
    if (isEmpty()) {
        index = 0;
        return false;
    }
    return listMode == NamedListModeSorted ? indexOfSorted(name, index)
                                           : indexOfUnsorted(name, index);
}

bool OCNamedList::indexOfSorted(const OCAnsiString& name, unsigned long& index) const {
    const OEStringCase sense = getSense();
    const OCObject* const* const slots = elements.elements;
    const auto named = [slots](unsigned long i) -> const OCAnsiString& {
        return static_cast<const OCNamedElement*>(slots[i])->name;
    };
    return orvabase::searchSorted(
        getCount(), [&](unsigned long i) { return named(i).compare(name, sense); },
        [&](unsigned long i) { fetchName(named(i)); }, index);
}

bool OCNamedList::indexOfUnsorted(const OCAnsiString& name, unsigned long& index) const {
    const unsigned long count = getCount();
    for (unsigned long i = 0; i < count; ++i) {
        if (i + namesFetchedAhead < count)
            fetchName(elementAt(i + namesFetchedAhead).name);
        if (elementAt(i).name.getLength() == name.getLength() && isNamed(i, name)) {
            index = i;
            return true;
        }
    }
    return false;
}

void OCNamedList::equalRange(unsigned long index, unsigned long& first, unsigned long& last) const {
    const OCAnsiString& name = elementAt(index).name;
    first = index;
    while (first != 0 && isNamed(first - 1, name))
        --first;
    last = index + 1;
    while (last != getCount() && isNamed(last, name))
        ++last;
}

bool OCNamedList::contains(const OCAnsiString& name) const {
    unsigned long index = 0;
    return indexOf(name, index);
}

const OCAnsiString& OCNamedList::getValue(const OCAnsiString& name) const {
    unsigned long index = 0;
    if (!indexOf(name, index))
        throw OXNamedList_NoSuchName(name);
    return elementAt(index).value;
}

OCAnsiString OCNamedList::getValue(const OCAnsiString& name, const OCAnsiString& fallback) const {
    unsigned long index = 0;
    return indexOf(name, index) ? elementAt(index).value : fallback;
}

void OCNamedList::setValue(const OCAnsiString& name, const OCAnsiString& value) {
    unsigned long index = 0;
    if (indexOf(name, index))
        elementAt(index).value = value;
    else
        addElement(name, value);
}

void OCNamedList::removeElement(const OCAnsiString& name) {
    if (listMode == NamedListModeSorted)
        removeSorted(name);
    else
        removeUnsorted(name);
}

void OCNamedList::removeSorted(const OCAnsiString& name) {
    // Once, as equal names stand together, unless the list is out of order.
    unsigned long first = 0;
    unsigned long last = 0;
    while (indexOf(name, first)) {
        equalRange(first, first, last);
        elements.removeElements(first, last - first);
    }
}

void OCNamedList::removeUnsorted(const OCAnsiString& name) {
    unsigned long first = 0;
    if (!indexOf(name, first))
        return;
    unsigned long removed = 1;
    for (unsigned long i = first + 1; i < getCount(); ++i)
        removed += isNamed(i, name);
    if (removed == 1) {
        elements.removeElement(first);
        return;
    }
    OCVector kept;
    kept.setCount(getCount() - removed);
    for (unsigned long i = 0, to = 0; i < getCount(); ++i) {
        if (!isNamed(i, name))
            kept.setElement(to++, elementAt(i));
    }
    elements.swap(kept);
}

void OCNamedList::clear() noexcept {
    try {
        OCVectorUtilities(elements).deleteElements();
    } catch (const OXMemory_AllocationError&) {
        // The elements are gone; only the array of slots could not be made smaller.
        elements = OCVector();
    }
}

void OCNamedList::throwNoSuchIndex(unsigned long index) {
    throw OXNamedList_NoSuchIndex(index);
}
