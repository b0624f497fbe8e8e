#include "OCResourceLocator.h"

#include "OCInteger.h"
#include "OCStringConversion.h"
#include "core/OCKernels.h"

#include <utility>

namespace kernels = orvabase::kernels;

namespace {

bool beginsWith(const OCAnsiString& text, char c) {
    return text.getLength() != 0 && text.getString()[0] == c;
}

} // namespace

OCResourceLocator::OCResourceLocator(const OCAnsiString& text) : OCResourceLocator() {
    OCAnsiString rest(text);
    parseParameters(rest);
    parseProtocol(rest);
    parseServer(rest);
    parsePort(rest);
    parseResource(rest);
}

OCResourceLocator::~OCResourceLocator() noexcept = default;

OCResourceLocator& OCResourceLocator::operator=(OCResourceLocator&& other) noexcept {
    if (this != &other)
        take(other);
    return *this;
}

OCResourceLocator& OCResourceLocator::assign(const OCResourceLocator& other) {
    if (this != &other) {
        OCResourceLocator copy(other);
        take(copy);
    }
    return *this;
}

OCResourceLocator& OCResourceLocator::assign(const OCAnsiString& text) {
    OCResourceLocator parsed(text);
    take(parsed);
    return *this;
}

void OCResourceLocator::take(OCResourceLocator& other) noexcept {
    protocol = std::move(other.protocol);
    server = std::move(other.server);
    resource = std::move(other.resource);
    parameters = std::move(other.parameters);
    port = std::exchange(other.port, 0);
}

void OCResourceLocator::clear() noexcept {
    clearProtocol();
    clearServer();
    clearResource();
    clearParameters();
    clearPort();
}

// Reading: what can fail comes before the first change.

void OCResourceLocator::parseParameters(OCAnsiString& text) {
    unsigned long mark = 0;
    if (!text.indexOf('?', mark))
        return clearParameters();
    OCQueryString parsed(OCAnsiString(text.getString() + mark + 1, text.getLength() - mark - 1));
    text.left(mark);
    parameters = std::move(parsed);
}

void OCResourceLocator::parseProtocol(OCAnsiString& text) {
    unsigned long colon = 0;
    if (!text.indexOf(':', colon))
        return clearProtocol();
    OCAnsiString parsed(text.getString(), colon);
    text.remove(0, colon + 1);
    protocol = std::move(parsed);
}

void OCResourceLocator::parseServer(OCAnsiString& text) {
    const char* const rest = text.getString() + 2;
    if (text.getLength() < 2 || rest[-2] != '/' || rest[-1] != '/')
        return clearServer();
    const unsigned long left = text.getLength() - 2;
    const unsigned long end = kernels::findEither(rest, left, ':', '/');
    OCAnsiString parsed(rest, end == kernels::notFound ? left : end);
    text.remove(0, parsed.getLength() + 2);
    server = std::move(parsed);
}

void OCResourceLocator::parsePort(OCAnsiString& text) {
    if (!beginsWith(text, ':'))
        return clearPort();
    unsigned long end = text.getLength();
    text.indexOf('/', end);
    const unsigned int parsed =
        OCUnsignedIntegerConversion::fromString(OCAnsiString(text.getString() + 1, end - 1), 10);
    text.remove(0, end);
    port = parsed;
}

void OCResourceLocator::parseResource(OCAnsiString& text) {
    resource = OCFilePath(std::move(text));
}

// Writing

OCAnsiString OCResourceLocator::getText(OEQueryStringFormat format) const {
    OCAnsiString text;
    if (hasServer()) {
        text += buildProtocol();
        text += buildServer();
        text += buildPort();
    }
    if (hasResource()) {
        text += buildResource();
        text += buildParameters(format);
    }
    return text;
}

OCAnsiString OCResourceLocator::buildProtocol() const {
    return hasProtocol() ? protocol + ":" : OCAnsiString();
}

OCAnsiString OCResourceLocator::buildServer() const {
    return !hasServer() || beginsWith(server, '/') ? server : "//" + server;
}

OCAnsiString OCResourceLocator::buildPort() const {
    return hasPort() ? ":" + OCStringConversion::fromSize(port, 10) : OCAnsiString();
}

OCAnsiString OCResourceLocator::buildResource() const {
    OCFilePath path(resource);
    if (hasResource() && hasServer())
        path.addLeadingSlash(FilePathSystemUnix);
    return std::move(path);
}

OCAnsiString OCResourceLocator::buildParameters(OEQueryStringFormat format) const {
    return parameters.getCount() != 0 ? "?" + parameters.getText(format) : OCAnsiString();
}
