#ifndef ORVABASE_OCQUERYSTRING_H
#define ORVABASE_OCQUERYSTRING_H

#include "OCAnsiString.h"
#include "OCVector.h"

/// What `getText` puts between two pairs. Any other value writes `&`.
enum OEQueryStringFormat : int {
    QueryStringFormatPlain = 0, ///< `&`
    QueryStringFormatHtml = 1   ///< `&amp;`, for text that stands inside HTML
};

/// A name and a value of a query, both as they are meant: nothing in them is encoded.
///
/// Not for use by several threads at once.
///
///     OCQueryElement element("city", "New York");
///     element.setValue("San José");
class ORVABASE_EXPORT OCQueryElement : public OCObject {
public:
    /// An empty name and an empty value.
    OCQueryElement() noexcept {}
    /// A copy of a name and of a value.
    /// @throws OXMemory_AllocationError
    OCQueryElement(const OCAnsiString& elementName, const OCAnsiString& elementValue)
        : name(elementName), value(elementValue) {}
    OCQueryElement(const OCQueryElement& other) = default;
    OCQueryElement& operator=(const OCQueryElement& other) { return assign(other); }
    ~OCQueryElement() noexcept override;

    /// Takes `other`'s name and value.
    /// @throws OXMemory_AllocationError; nothing is changed then.
    OCQueryElement& assign(const OCQueryElement& other);

    /// The name and the value, which last until they are changed.
    const OCAnsiString& getName() const { return name; }
    const OCAnsiString& getValue() const { return value; }
    /// Replace one of the two. The text may be the element's own.
    /// @throws OXMemory_AllocationError; nothing is changed then.
    void setName(const OCAnsiString& text) { name = text; }
    void setValue(const OCAnsiString& text) { value = text; }

private:
    friend class OCQueryString;

    /// A part of a text in URL form.
    struct Piece {
        OCAnsiString decoded() const;

        const char* begin;
        const char* end;
        bool encoded; // whether anything in it stands for something else
    };
    OCQueryElement(const Piece& nameForm, const Piece& valueForm);

    OCAnsiString name;
    OCAnsiString value;
};

/// The pairs of names and values in the query of a URL: `a=b&c=d`.
///
/// The pairs keep their order, and a name may occur several times. Names are matched without regard
/// to the case of ASCII letters. The text is decoded when it is read and encoded when it is
/// written; in between names and values are as they are meant.
///
/// An operation that throws leaves everything as it was. Arguments may be names and values of the
/// query itself. References to elements, names and values hold until the element is removed. Every
/// operation by name takes time in proportion to the number of elements. A pair takes one heap
/// request, and one more for each text of 128 characters or more. Not for use by several threads at
/// once.
///
///     OCQueryString query("lang=en&q=a+b%2Fc");
///     query.getValue("Q");                        // a b/c
///     query.setValue("lang", "de");
///     query.addElement("page", "2");
///     query.getText();                            // lang=de&q=a+b%2fc&page=2
///     query.getText(QueryStringFormatHtml);       // lang=de&amp;q=a+b%2fc&amp;page=2
class ORVABASE_EXPORT OCQueryString : public OCObject {
public:
    /// A query without elements.
    OCQueryString() noexcept {}
    /// The pairs that `assign` makes of `text`.
    /// @throws OXMemory_AllocationError
    OCQueryString(const OCAnsiString& text);
    /// Copies of all elements.
    /// @throws OXMemory_AllocationError
    OCQueryString(const OCQueryString& other);
    /// Takes `other`'s elements; it has none afterwards.
    OCQueryString(OCQueryString&& other) noexcept { swap(other); }
    /// What `assign` does.
    OCQueryString& operator=(const OCAnsiString& text) { return assign(text); }
    OCQueryString& operator=(const OCQueryString& other) { return assign(other); }
    OCQueryString& operator=(OCQueryString&& other) noexcept;
    /// Deletes the elements.
    ~OCQueryString() noexcept override;

    /// Replaces the elements by copies of `other`'s. A query assigned to itself stays as it is.
    /// @throws OXMemory_AllocationError
    OCQueryString& assign(const OCQueryString& other);
    /// Replaces the elements by the pairs of `text`, in linear time.
    ///
    /// Pairs end at `&`. The name ends at the first `=`; what follows, further `=` included, is the
    /// value, which may be empty or missing. Then `+` stands for a space and `%` with two
    /// hexadecimal digits for a byte; any other `%` stays as it is. Pairs without a name are
    /// dropped.
    ///
    /// Note: only `&` separates pairs, so the text that `getText` writes for HTML must be taken out
    /// of its HTML form before it is read: `a=1&amp;b=2` has the names `a` and `amp;b`.
    /// @throws OXMemory_AllocationError
    OCQueryString& assign(const OCAnsiString& text);
    /// What `assign` does.
    void setText(const OCAnsiString& text) { assign(text); }
    /// The elements as text: `name=value` each, encoded as `OCAnsiString::escape` does, with the
    /// separator of `format` between two. An element with an empty value is its name alone. Takes
    /// linear time and one heap request at most.
    /// @throws OXMemory_AllocationError
    OCAnsiString getText(OEQueryStringFormat format = QueryStringFormatPlain) const;
    /// Removes all elements.
    void clear() noexcept;

    /// The number of elements.
    unsigned long getCount() const { return elements.getCount(); }

    /// Appends a pair, also when the name exists already.
    ///
    /// Note: the name may be empty, but a text has no way to say so: such a pair is dropped when
    /// what `getText` made of it is read again.
    /// @throws OXMemory_AllocationError
    void addElement(const OCAnsiString& name, const OCAnsiString& value);
    /// Gives the one element of this name another value. If there is none, or if there are several,
    /// all of them are removed and a new one is appended.
    /// @throws OXMemory_AllocationError
    void setValue(const OCAnsiString& name, const OCAnsiString& value);

    /// The element at `index`, its name and its value.
    /// @throws OXQueryString_NoSuchIndex when `index` is not below the count.
    OCQueryElement& getElement(unsigned long index) {
        checkIndex(index);
        return static_cast<OCQueryElement&>(elements.getElement(index));
    }
    const OCQueryElement& getElement(unsigned long index) const {
        checkIndex(index);
        return static_cast<const OCQueryElement&>(elements.getElement(index));
    }
    const OCAnsiString& getName(unsigned long index) const { return getElement(index).getName(); }
    const OCAnsiString& getValue(unsigned long index) const { return getElement(index).getValue(); }

    /// The first element of this name, and its value.
    /// @throws OXQueryString_NoSuchName when there is none.
    OCQueryElement& getElement(const OCAnsiString& name);
    const OCQueryElement& getElement(const OCAnsiString& name) const;
    const OCAnsiString& getValue(const OCAnsiString& name) const {
        return getElement(name).getValue();
    }
    /// A copy of the value of the first element of this name, or of `defaultValue` when there is
    /// none.
    /// @throws OXMemory_AllocationError
    OCAnsiString getValue(const OCAnsiString& name, const OCAnsiString& defaultValue) const;

    /// Whether there is an element of this name, and how many there are.
    bool contains(const OCAnsiString& name) const;
    unsigned long countElement(const OCAnsiString& name) const;
    /// Looks for the first element of this name: true and its place in `index`, or false with
    /// `index` untouched.
    bool indexOf(const OCAnsiString& name, unsigned long& index) const;

    /// Removes and deletes the element at `index`.
    /// @throws OXQueryString_NoSuchIndex when `index` is not below the count,
    /// OXMemory_AllocationError when the array of elements cannot be made smaller.
    void removeElement(unsigned long index);
    /// Removes and deletes every element of this name, in one pass. There may be none.
    /// @throws OXMemory_AllocationError when the array of elements cannot be made smaller.
    void removeElement(const OCAnsiString& name);

private:
    void checkIndex(unsigned long index) const {
        if (index >= elements.getCount())
            throwNoSuchIndex(index);
    }
    [[noreturn]] static void throwNoSuchIndex(unsigned long index);
    void swap(OCQueryString& other) noexcept;
    void parse(const char* text, unsigned long count);
    void addParsed(OCQueryElement* added);
    void appendElement(OCQueryElement* added);
    void replaceElements(const OCAnsiString& name, OCQueryElement* successor);
    void deleteElements() noexcept;

    OCVector elements;
};

/// The family of the query string's failures.
class ORVABASE_EXPORT OXQueryString : public OXAutoException {
public:
    ~OXQueryString() noexcept override;

protected:
    OXQueryString();
};

/// "Query string index out of bounds", with the index.
class ORVABASE_EXPORT OXQueryString_NoSuchIndex : public OXQueryString {
public:
    explicit OXQueryString_NoSuchIndex(unsigned long index);
    ~OXQueryString_NoSuchIndex() noexcept override;
};

/// "Query element does not exist", with the name.
class ORVABASE_EXPORT OXQueryString_NoSuchName : public OXQueryString {
public:
    explicit OXQueryString_NoSuchName(const OCAnsiString& name);
    ~OXQueryString_NoSuchName() noexcept override;
};

#endif
