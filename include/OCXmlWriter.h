#ifndef ORVABASE_OCXMLWRITER_H
#define ORVABASE_OCXMLWRITER_H

#include "OCStack.h"
#include "OCXmlParserReader.h"

namespace orvabase {
class XmlWriterLines;
}

/// Where the lines of an XML writer go: it indents them, ends them with "\r\n" and encodes them.
///
/// With `XmlEncodingWide` each character is written as its four bytes in the machine's byte order;
/// with any other value as its low 8 bits. Each line is one write to the stream, its end included.
///
/// It refers to the stream, which must outlive it. What the stream throws passes through; lines
/// before the one that failed are written then. For use by one thread at a time.
///
///     OCXmlWriterOutput output(stream, XmlEncodingAnsi);
///     output.indent();
///     output.write(L"one\ntwo");     // "  one\r\n" and "  two\r\n"
class ORVABASE_EXPORT OCXmlWriterOutput : public OCObject {
public:
    /// An output at depth 0, with indentation on. Nothing is written.
    OCXmlWriterOutput(OCStream& target, OEXmlEncoding targetEncoding) noexcept
        : indenting(true), stream(target), encoding(targetEncoding) {}
    OCXmlWriterOutput(const OCXmlWriterOutput&) = delete;
    OCXmlWriterOutput& operator=(const OCXmlWriterOutput&) = delete;
    ~OCXmlWriterOutput() noexcept override;

    /// Turns indentation on or off. While it is off, lines are not indented and the depth stays as
    /// it is, whatever `indent` and `unindent` are asked for.
    ///
    /// Note: turned off or on between the start and the end of an element, it leaves what follows
    /// at another depth.
    void setIndent(bool on) noexcept { indenting = on; }
    /// Indents the lines that follow by two spaces more, if indentation is on.
    /// @throws OXMemory_AllocationError; the depth is then as it was.
    void indent();
    /// Indents the lines that follow by two spaces less, if indentation is on. At depth 0 it does
    /// nothing.
    void unindent() noexcept;

    /// Writes a text as lines: it is cut at every "\r\n", lone "\r" and lone "\n", and each piece
    /// is written by `writeLine`. A break at the very end makes no further line; an empty text
    /// writes nothing.
    /// @throws OXMemory_AllocationError before anything is written, OXStream_WriteError and
    /// whatever the stream throws.
    void write(const OCWideString& text);
    /// Writes the indentation, the line and "\r\n". An empty line is "\r\n" alone.
    ///
    /// Note: line breaks inside the line are written as they are.
    /// @throws what `write` throws.
    void writeLine(const OCWideString& line);
    /// Writes a text in the output's encoding, with nothing added: one write, none for an empty
    /// text.
    /// @throws what `write` throws.
    void writeEncoded(const OCWideString& text);

private:
    friend class OCXmlWriter;
    friend class orvabase::XmlWriterLines;

    bool indenting;
    OCStream& stream;
    OCWideString prefix;
    OEXmlEncoding encoding;
};

/// A name and a value that an XML writer puts into a tag. For use by one thread at a time.
class ORVABASE_EXPORT OCXmlWriterElementAttribute : public OCObject {
public:
    /// An empty name and an empty value.
    OCXmlWriterElementAttribute() noexcept = default;
    OCXmlWriterElementAttribute(const OCXmlWriterElementAttribute&) = default;
    OCXmlWriterElementAttribute& operator=(const OCXmlWriterElementAttribute&) = default;
    ~OCXmlWriterElementAttribute() noexcept override;

    /// The name and the value, which last until they are changed.
    const OCWideString& getName() const noexcept { return name; }
    const OCWideString& getValue() const noexcept { return value; }
    /// Replace the name or the value.
    /// @throws OXMemory_AllocationError; the attribute is then as it was (so in `setValue`).
    void setName(const OCWideString& text) { name.assign(text); }
    void setValue(const OCWideString& text) { value.assign(text); }

    /// A space, the name, and for a value that is not empty `="`, the value and `"`.
    ///
    /// Note: nothing is escaped, and an empty value leaves the bare name, which is no XML.
    /// @throws OXMemory_AllocationError
    OCWideString makeText() const;

private:
    OCWideString name;
    OCWideString value;
};

/// The attributes of a tag in their order, which it owns. A name may occur several times. For use
/// by one thread at a time.
///
///     OCXmlWriterElementAttributeList attributes;
///     attributes.addAttribute(L"width", L"10");
///     attributes.addAttribute(L"height", L"20");
///     attributes.makeText();                   //  width="10" height="20"
class ORVABASE_EXPORT OCXmlWriterElementAttributeList : public OCObject {
public:
    OCXmlWriterElementAttributeList() noexcept = default;
    OCXmlWriterElementAttributeList(const OCXmlWriterElementAttributeList&) = delete;
    OCXmlWriterElementAttributeList& operator=(const OCXmlWriterElementAttributeList&) = delete;
    ~OCXmlWriterElementAttributeList() noexcept override;

    /// Append an attribute with copies of `name` and `value`, which is empty when not given.
    /// @throws OXMemory_AllocationError; the list is then as it was.
    void addAttribute(const OCWideString& name) { addAttribute(name, OCWideString()); }
    void addAttribute(const OCWideString& name, const OCWideString& value);
    /// The attribute at `index`, until the list is emptied.
    /// @throws OXVector_NoSuchIndex when `index` is not below the count.
    OCXmlWriterElementAttribute& getAttribute(unsigned int index) {
        return static_cast<OCXmlWriterElementAttribute&>(attributes.getElement(index));
    }
    const OCXmlWriterElementAttribute& getAttribute(unsigned int index) const {
        return static_cast<const OCXmlWriterElementAttribute&>(attributes.getElement(index));
    }
    /// The number of attributes.
    unsigned int getCount() const noexcept {
        return static_cast<unsigned int>(attributes.getCount());
    }
    /// The texts of all attributes, one behind the other: each begins with a space.
    /// @throws OXMemory_AllocationError
    OCWideString makeText() const;

    /// Deletes all attributes; the list can be filled again.
    void destroyAttributes() noexcept;
    void destroy() noexcept { destroyAttributes(); }

private:
    OCVector attributes;
};

/// The names of the elements that are open, the innermost on top. It owns its copies. For use by
/// one thread at a time.
class ORVABASE_EXPORT OCXmlWriterElementStack : public OCObject {
public:
    /// An empty stack.
    OCXmlWriterElementStack() noexcept = default;
    OCXmlWriterElementStack(const OCXmlWriterElementStack&) = delete;
    OCXmlWriterElementStack& operator=(const OCXmlWriterElementStack&) = delete;
    ~OCXmlWriterElementStack() noexcept override;

    /// Puts a copy of `name` on top.
    /// @throws OXMemory_AllocationError; the stack is then as it was.
    void push(const OCWideString& name);
    /// Takes the name on top off the stack.
    /// @throws OXStack_UnderflowError when the stack is empty, OXMemory_AllocationError when its
    /// array cannot be made smaller; the stack is then as it was.
    OCWideString pop();
    /// Whether no element is open.
    bool isEmpty() const noexcept { return names.isEmpty(); }
    /// Drops all names.
    void clear() noexcept;

private:
    friend class OCXmlWriter;

    const OCWideString& top() const { return static_cast<const OCWideString&>(names.top()); }

    OCStack names;
};

/// Writes XML: a line for each tag and for each line of character data, indented by the depth. It
/// remembers the names of open elements and writes the matching end tags.
///
/// Note: it escapes nothing. Names, values and texts are written exactly as given; the caller takes
/// care of `<`, `&` and quotes. The spaces and line ends between the tags become part of the
/// document's character data.
///
/// It refers to the output, which must outlive it. For use by one thread at a time.
///
/// Every operation that writes throws OXMemory_AllocationError, with nothing written or changed,
/// when it cannot get the memory that it needs. What the stream throws passes through: how much of
/// the text is written is up to the stream then, and see `startElement` and `endElement`.
///
///     OCXmlWriterOutput output(stream, XmlEncodingAnsi);
///     OCXmlWriter writer(output);
///     writer.xmlDeclaration();                 // <?xml version="1.0"?>
///     writer.startElement(L"list");            // <list>
///     writer.characterData(L"milk\nbread");    //   milk
///                                              //   bread
///     writer.emptyElement(L"end");             //   <end/>
///     writer.closeElements();                  // </list>
class ORVABASE_EXPORT OCXmlWriter : public OCObject {
public:
    /// A writer without open elements. Nothing is written.
    /// @throws OXMemory_AllocationError
    explicit OCXmlWriter(OCXmlWriterOutput& target);
    OCXmlWriter(const OCXmlWriter&) = delete;
    OCXmlWriter& operator=(const OCXmlWriter&) = delete;
    /// Note: elements that are still open are not closed; nothing is written.
    ~OCXmlWriter() noexcept override;

    /// The names of the open elements.
    OCXmlWriterElementStack& getElementStack() noexcept { return *elementStack; }
    const OCXmlWriterElementStack& getElementStack() const noexcept { return *elementStack; }
    /// The output that it writes to.
    OCXmlWriterOutput& getOutput() noexcept { return output; }
    const OCXmlWriterOutput& getOutput() const noexcept { return output; }

    /// Writes `<?xml version="1.0"?>`.
    ///
    /// Note: no encoding is declared, whatever the output's encoding.
    void xmlDeclaration();
    /// Writes `<?`, the target, the attributes and `?>`.
    void processingInstruction(const OCWideString& target,
                               const OCXmlWriterElementAttributeList& attributes);
    /// Opens an element: writes its start tag and indents what follows.
    ///
    /// Note: when the stream refuses the tag, the element counts as open, but what follows is not
    /// indented.
    void startElement(const OCWideString& name);
    void startElement(const OCWideString& name, const OCXmlWriterElementAttributeList& attributes);
    /// Writes the tag of an element without content.
    void emptyElement(const OCWideString& name);
    void emptyElement(const OCWideString& name, const OCXmlWriterElementAttributeList& attributes);
    /// Closes the innermost open element and writes its end tag.
    ///
    /// Note: when the stream refuses the tag, the element is closed all the same.
    /// @throws OXStack_UnderflowError when no element is open; nothing is written then.
    void endElement();
    /// Closes all open elements, the innermost first.
    void closeElements();
    /// Writes a text, each of its lines indented. An empty text writes nothing.
    void characterData(const OCWideString& text);

    /// The steps of construction and destruction. `initialize` gives the writer a new stack without
    /// open elements; nothing is written and the depth of the output stays.
    ///
    /// Note: after `destroy` the writer has no stack: it must not be used before `initialize`.
    /// @throws OXMemory_AllocationError from `initialize`; the stack then stays.
    void initialize();
    void initializeElementStack();
    void destroy() noexcept;
    void destroyElementStack() noexcept;

private:
    OCXmlWriterElementStack* elementStack;
    OCXmlWriterOutput& output;
};

#endif
