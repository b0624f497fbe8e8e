#ifndef ORVABASE_OCRESOURCELOCATOR_H
#define ORVABASE_OCRESOURCELOCATOR_H

#include "OCAnsiString.h"
#include "OCFilePath.h"
#include "OCQueryString.h"

/// A locator such as `web://server:8080/path/file?name=value&more`, in its parts.
///
/// A locator knows no particular protocol: there are no default ports, users, passwords or
/// fragments, nothing is resolved against another locator, and only the parameters are decoded and
/// encoded (see `OCQueryString`). Parts that are absent are empty; the port is 0 then.
///
/// An operation that throws leaves everything as it was. Arguments may be parts of the locator
/// itself. Reading and writing take linear time. Not for use by several threads at once.
///
///     OCResourceLocator locator("web://server:8080/search?q=a+b");
///     locator.getPort();                         // 8080
///     locator.getParameters().getValue("q");     // a b
///     locator.clearPort();
///     locator.getParameters().addElement("page", "2");
///     locator.getText();                         // web://server/search?q=a+b&page=2
///
/// Note: not every text is written as it was read. The protocol ends at the first `:` wherever that
/// stands, so `host:80/x` has the protocol `host`; the protocol and the port are written only with
/// a server, and the parameters only with a resource: `memo:item` is written as `item`, and
/// `web://server?q=1` as `web://server`.
class ORVABASE_EXPORT OCResourceLocator : public OCObject {
public:
    /// A locator without any part.
    OCResourceLocator() noexcept : port(0) {}
    /// The parts that `assign` finds in `text`.
    /// @throws OXIntegerConversion_ConvertStringError, OXMemory_AllocationError
    OCResourceLocator(const OCAnsiString& text);
    /// Copies of all parts.
    /// @throws OXMemory_AllocationError
    OCResourceLocator(const OCResourceLocator& other) = default;
    /// Takes `other`'s parts; it has none afterwards.
    OCResourceLocator(OCResourceLocator&& other) noexcept : port(0) { take(other); }
    /// What `assign` does.
    OCResourceLocator& operator=(const OCAnsiString& text) { return assign(text); }
    OCResourceLocator& operator=(const OCResourceLocator& other) { return assign(other); }
    OCResourceLocator& operator=(OCResourceLocator&& other) noexcept;
    ~OCResourceLocator() noexcept override;

    /// Replaces all parts by copies of `other`'s. A locator assigned to itself stays as it is.
    /// @throws OXMemory_AllocationError
    OCResourceLocator& assign(const OCResourceLocator& other);
    /// Replaces all parts by those of `text`: what `parseParameters`, `parseProtocol`,
    /// `parseServer`, `parsePort` and `parseResource` find in it, in this order.
    /// @throws OXIntegerConversion_ConvertStringError when the port is an empty text, as in
    /// `web://server:/path`; OXMemory_AllocationError
    OCResourceLocator& assign(const OCAnsiString& text);
    /// What `assign` does.
    void setText(const OCAnsiString& text) { assign(text); }
    /// The locator as text: if there is a server, the protocol, the server and the port; the
    /// resource, which begins with a slash behind a server; if there is a resource, the parameters
    /// with the separator of `format`.
    /// @throws OXMemory_AllocationError
    OCAnsiString getText(OEQueryStringFormat format = QueryStringFormatPlain) const;
    /// Clears all parts.
    void clear() noexcept;

    /// The protocol without its `:`.
    const OCAnsiString& getProtocol() const { return protocol; }
    /// Whether there is a protocol.
    bool hasProtocol() const { return protocol.getLength() != 0; }
    /// Stores the text as it is, as `setServer` and `setResource` do.
    /// @throws OXMemory_AllocationError
    void setProtocol(const OCAnsiString& text) { protocol = text; }
    /// Removes the protocol.
    void clearProtocol() noexcept { protocol.clear(); }

    /// The server without the slashes in front.
    const OCAnsiString& getServer() const { return server; }
    /// Whether there is a server.
    bool hasServer() const { return server.getLength() != 0; }
    /// Stores the text as it is.
    /// @throws OXMemory_AllocationError
    void setServer(const OCAnsiString& text) { server = text; }
    /// Removes the server.
    void clearServer() noexcept { server.clear(); }

    /// The number of the port; 0 is none.
    unsigned int getPort() const { return port; }
    /// Whether there is a port.
    bool hasPort() const { return port != 0; }
    /// Sets the number of the port; 0 is none.
    void setPort(unsigned int number) { port = number; }
    /// Removes the port.
    void clearPort() noexcept { port = 0; }

    /// What stands between the server and the parameters, the slash in front included.
    const OCFilePath& getResource() const { return resource; }
    /// Whether there is a resource.
    bool hasResource() const { return resource.getLength() != 0; }
    /// Stores the path as it is.
    /// @throws OXMemory_AllocationError
    void setResource(const OCFilePath& path) { resource = path; }
    /// Removes the resource.
    void clearResource() noexcept { resource.clear(); }

    /// The parameters, decoded.
    OCQueryString& getParameters() { return parameters; }
    const OCQueryString& getParameters() const { return parameters; }
    /// Removes the parameters.
    void clearParameters() noexcept { parameters.clear(); }

    // The steps of reading. Each takes its part off `text`, or clears the part when `text` has
    // none. All may throw OXMemory_AllocationError; part and text are unchanged then.

    /// Takes the first `?` and what follows off the end.
    void parseParameters(OCAnsiString& text);
    /// Takes what stands before the first `:`, and that, off the front.
    ///
    /// Note: the `:` is looked for in the whole text.
    void parseProtocol(OCAnsiString& text);
    /// If `text` begins with `//`, takes that and what stands before the next `:` or `/` off the
    /// front.
    void parseServer(OCAnsiString& text);
    /// If `text` begins with `:`, takes that and what stands before the next `/` off the front, and
    /// converts it as `OCUnsignedIntegerConversion::fromString` does.
    ///
    /// Note: the conversion ends at the first character that is no digit, and a number beyond 32
    /// bits wraps around: `:80x` is the port 80, and `:x` none.
    /// @throws OXIntegerConversion_ConvertStringError when nothing stands behind the `:`; part and
    /// text are unchanged then.
    void parsePort(OCAnsiString& text);
    /// Takes all of it.
    void parseResource(OCAnsiString& text);

    // The steps of writing. Each returns its part's text, which is empty when the part is absent.
    // All may throw OXMemory_AllocationError.

    /// The protocol and `:`.
    OCAnsiString buildProtocol() const;
    /// `//` and the server.
    ///
    /// Note: a server that begins with `/` is returned as it is.
    OCAnsiString buildServer() const;
    /// `:` and the port.
    OCAnsiString buildPort() const;
    /// The resource; if there is a server, with `/` in front unless it begins with a slash.
    OCAnsiString buildResource() const;
    /// `?` and the parameters.
    OCAnsiString buildParameters(OEQueryStringFormat format = QueryStringFormatPlain) const;

private:
    void take(OCResourceLocator& other) noexcept;

    OCAnsiString protocol;
    OCAnsiString server;
    OCFilePath resource;
    OCQueryString parameters;
    unsigned int port;
};

#endif
