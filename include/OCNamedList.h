#ifndef ORVABASE_OCNAMEDLIST_H
#define ORVABASE_OCNAMEDLIST_H

#include "OCAnsiString.h"
#include "OCVector.h"

/// How a named list orders and matches its names. Any value but 0 is sensitive.
enum OENamedListCase : int { NamedListCaseInsensitive = 0, NamedListCaseSensitive = 1 };

/// Whether a named list keeps itself sorted by name. Only 1 is sorted.
enum OENamedListMode : int { NamedListModeUnsorted = 0, NamedListModeSorted = 1 };

/// The comparison functions of named lists for names.
ORVABASE_EXPORT OECompareResult namedListCompareNamesSensitive(const OCAnsiString& a,
                                                               const OCAnsiString& b);
ORVABASE_EXPORT OECompareResult namedListCompareNamesInsensitive(const OCAnsiString& a,
                                                                 const OCAnsiString& b);

/// The comparison functions of named lists for vectors of `OCNamedElement`: by the elements' names.
/// @throws std::bad_cast when an object is null or not an `OCNamedElement`.
ORVABASE_EXPORT OECompareResult namedListCompareElementsSensitive(const OCObject* a,
                                                                  const OCObject* b);
ORVABASE_EXPORT OECompareResult namedListCompareElementsInsensitive(const OCObject* a,
                                                                    const OCObject* b);

/// A name and a value.
///
///     OCNamedElement element("HOME", "/home/me");
///     element.setValue("/root");
class ORVABASE_EXPORT OCNamedElement : public OCObject {
public:
    /// A copy of a name and of a value.
    /// @throws OXMemory_AllocationError (so does whatever changes an element; nothing is changed
    /// then).
    OCNamedElement(const OCAnsiString& elementName, const OCAnsiString& elementValue)
        : name(elementName), value(elementValue) {}
    OCNamedElement(const OCNamedElement&) = default;
    OCNamedElement& operator=(const OCNamedElement& other) { return assign(other); }
    ~OCNamedElement() noexcept override;

    /// Takes `other`'s name and value.
    OCNamedElement& assign(const OCNamedElement& other);

    /// The name and the value, which last until they are changed.
    const OCAnsiString& getName() const { return name; }
    const OCAnsiString& getValue() const { return value; }
    /// Note: a sorted list does not learn of a new name of one of its elements. The name must sort
    /// where the old one does, or names may be missed by later searches.
    void setName(const OCAnsiString& text) { name = text; }
    /// Sets the value.
    void setValue(const OCAnsiString& text) { value = text; }

private:
    friend class OCNamedList;

    OCAnsiString name;
    OCAnsiString value;
};

/// A list of names with values, in insertion order or kept sorted by name (look-ups are binary
/// searches then): a small dictionary.
///
/// It makes and owns its elements, which hold copies of what it is given; a name or value of the
/// list itself may be given, too, and counts as it was at the call. A name may occur more than once
/// (`addElement` allows it); operations by name then work on one of its elements: the first in an
/// unsorted list, any of them in a sorted one. Not for use by several threads at once.
///
/// Every operation that throws leaves the list as it was.
///
///     OCNamedList settings(NamedListCaseInsensitive, NamedListModeSorted);
///     settings.setValue("Path", "/bin");
///     settings.setValue("PATH", "/usr/bin");   // the same element
///     settings.getValue("path");               // /usr/bin
///     settings.getValue("shell", "/bin/sh");   // /bin/sh, as there is no such name
class ORVABASE_EXPORT OCNamedList : public OCObject {
public:
    /// The type of a comparison function for names.
    typedef OECompareResult (*NameComparator)(const OCAnsiString&, const OCAnsiString&);

    /// An empty list.
    OCNamedList(OENamedListCase matching, OENamedListMode order) noexcept
        : listCase(matching), listMode(order) {}
    /// A deep copy, by `assign`.
    OCNamedList(const OCNamedList& other);
    OCNamedList& operator=(const OCNamedList& other) { return assign(other); }
    /// Deletes the elements.
    ~OCNamedList() noexcept override;

    /// Takes `other`'s case and mode, and appends `other` to the emptied list. A list assigned to
    /// itself stays as it is.
    ///
    /// Note: names that occur in `other` more than once become one element.
    /// @throws OXMemory_AllocationError
    OCNamedList& assign(const OCNamedList& other);
    /// Sets the value of each of `other`'s names in order, by `setValue`: names that the list
    /// already has get the new value, the others are added. A list appended to itself is read as it
    /// was before.
    /// @throws OXMemory_AllocationError
    OCNamedList& append(const OCNamedList& other);
    /// Adds an element, even if the list has that name already: at its place in a sorted list
    /// (before an equal name), at the end of an unsorted one.
    /// @throws OXMemory_AllocationError
    void addElement(const OCAnsiString& name, const OCAnsiString& value);

    /// The number of elements.
    unsigned long getCount() const { return elements.getCount(); }
    /// Whether there are none.
    bool isEmpty() const { return getCount() == 0; }
    /// The element at `index`, which stays the list's own; the reference lasts until the list is
    /// cleared. Likewise its name and its value.
    /// @throws OXNamedList_NoSuchIndex
    OCNamedElement& getElement(unsigned long index) {
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): the list's own element
        return const_cast<OCNamedElement&>(
            static_cast<const OCNamedList*>(this)->getElement(index));
    }
    const OCNamedElement& getElement(unsigned long index) const {
        if (index >= getCount())
            throwNoSuchIndex(index);
        return elementAt(index);
    }
    const OCAnsiString& getName(unsigned long index) const { return getElement(index).getName(); }
    const OCAnsiString& getValue(unsigned long index) const { return getElement(index).getValue(); }
    /// Sets the value of the element at `index`.
    /// @throws OXNamedList_NoSuchIndex, OXMemory_AllocationError
    void setValue(unsigned long index, const OCAnsiString& value) {
        getElement(index).setValue(value);
    }

    /// Looks `name` up: true and its index, or false. On false the index is 0 for an empty list,
    /// the place where the name would be inserted for a sorted one, and untouched for an unsorted
    /// one.
    bool indexOf(const OCAnsiString& name, unsigned long& index) const;
    bool contains(const OCAnsiString& name) const;
    /// The value of `name`; the reference lasts until the list is cleared.
    /// @throws OXNamedList_NoSuchName
    const OCAnsiString& getValue(const OCAnsiString& name) const;
    /// The value of `name`, or `fallback` when there is no such name; a copy in both cases.
    /// @throws OXMemory_AllocationError
    OCAnsiString getValue(const OCAnsiString& name, const OCAnsiString& fallback) const;
    /// Sets the value of `name`, which is added when the list does not have it.
    /// @throws OXMemory_AllocationError
    void setValue(const OCAnsiString& name, const OCAnsiString& value);

    /// Removes every element of that name from the list.
    ///
    /// Note: the elements are not deleted. Whoever holds a reference to one owns it from now on;
    /// others are never given back.
    /// @throws OXMemory_AllocationError
    void removeElement(const OCAnsiString& name);
    /// Deletes all elements.
    void clear() noexcept;

    /// The comparison functions of the list's case.
    NameComparator compareNamesFunction() const {
        return listCase == NamedListCaseInsensitive ? namedListCompareNamesInsensitive
                                                    : namedListCompareNamesSensitive;
    }
    OCVector::Comparator compareElementsFunction() const {
        return listCase == NamedListCaseInsensitive ? namedListCompareElementsInsensitive
                                                    : namedListCompareElementsSensitive;
    }

private:
    class Merge;

    [[noreturn]] static void throwNoSuchIndex(unsigned long index);
    OEStringCase getSense() const {
        return listCase == NamedListCaseInsensitive ? StringCaseInsensitive : StringCaseSensitive;
    }
    const OCNamedElement& elementAt(unsigned long index) const {
        return static_cast<const OCNamedElement&>(elements.getElement(index));
    }
    OCNamedElement& elementAt(unsigned long index) {
        return static_cast<OCNamedElement&>(elements.getElement(index));
    }
    bool isNamed(unsigned long index, const OCAnsiString& name) const {
        return elementAt(index).name.compare(name, getSense()) == CompareResultEqual;
    }

    bool indexOfSorted(const OCAnsiString& name, unsigned long& index) const;
    bool indexOfUnsorted(const OCAnsiString& name, unsigned long& index) const;
    /// The indexes of the elements around `index` that have the name of that one: from `first` up
    /// to before `last`.
    void equalRange(unsigned long index, unsigned long& first, unsigned long& last) const;
    void insertElement(unsigned long index, OCNamedElement& element);
    void removeSorted(const OCAnsiString& name);
    void removeUnsorted(const OCAnsiString& name);

    OENamedListCase listCase;
    OENamedListMode listMode;
    OCVector elements;
};

/// The family of the named list's failures.
class ORVABASE_EXPORT OXNamedList : public OXAutoException {
public:
    ~OXNamedList() noexcept override;

protected:
    OXNamedList();
};

/// "Named element index out of bounds", with the index.
class ORVABASE_EXPORT OXNamedList_NoSuchIndex : public OXNamedList {
public:
    explicit OXNamedList_NoSuchIndex(unsigned long index);
    ~OXNamedList_NoSuchIndex() noexcept override;
};

/// "Named element does not exist", with the name.
class ORVABASE_EXPORT OXNamedList_NoSuchName : public OXNamedList {
public:
    explicit OXNamedList_NoSuchName(const OCAnsiString& name);
    ~OXNamedList_NoSuchName() noexcept override;
};

#endif
