// Resource locators against a model that takes texts apart by copies. Every input is read as a
// text; with its first characters also parts are set that no text could have given.

#include "OCResourceLocator.h"

#include "Require.h"

#include "../tests/support/LocatorModel.h"
#include "OCInteger.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

std::string standard(const OCAnsiString& text) {
    return std::string(text.getString(), text.getLength());
}

OCAnsiString string(const std::string& text) {
    return OCAnsiString(text.data(), text.size());
}

void compare(const OCResourceLocator& locator, const LocatorModel& model) {
    REQUIRE(standard(locator.getProtocol()) == model.protocol);
    REQUIRE(locator.hasProtocol() == !model.protocol.empty());
    REQUIRE(standard(locator.getServer()) == model.server);
    REQUIRE(locator.hasServer() == !model.server.empty());
    REQUIRE(standard(locator.getResource()) == model.resource);
    REQUIRE(locator.hasResource() == !model.resource.empty());
    REQUIRE(locator.getPort() == model.port);
    REQUIRE(locator.hasPort() == (model.port != 0));
    REQUIRE(standard(locator.getParameters().getText()) == model.parameters.getText(0));
    REQUIRE(standard(locator.getText()) == model.getText(0));
    REQUIRE(standard(locator.getText(QueryStringFormatHtml)) == model.getText(1));
}

/// Whether the text could be read.
bool read(OCResourceLocator& locator, const std::string& text) {
    try {
        locator.setText(string(text));
        return true;
    } catch (const OXIntegerConversion_ConvertStringError&) {
        return false;
    }
}

/// The steps one by one make what the whole makes.
void readInSteps(const OCResourceLocator& locator, const std::string& text) {
    OCResourceLocator stepped("other://server:1/resource?a=b");
    OCAnsiString rest = string(text);
    stepped.parseParameters(rest);
    stepped.parseProtocol(rest);
    stepped.parseServer(rest);
    stepped.parsePort(rest);
    stepped.parseResource(rest);
    REQUIRE(rest.getLength() == 0);
    REQUIRE(stepped.getText() == locator.getText());
    REQUIRE(stepped.buildProtocol() == locator.buildProtocol());
    REQUIRE(stepped.buildServer() == locator.buildServer());
    REQUIRE(stepped.buildPort() == locator.buildPort());
    REQUIRE(stepped.buildResource() == locator.buildResource());
    REQUIRE(stepped.buildParameters() == locator.buildParameters());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    OCResourceLocator locator("other://server:1/resource?a=b");
    LocatorModel model;
    model.setText("other://server:1/resource?a=b");
    const bool done = read(locator, text);
    REQUIRE(done == model.setText(text));
    compare(locator, model);
    if (done)
        readInSteps(locator, text);

    // With a protocol and a server only parameters without a resource are lost in writing.
    if (done && locator.hasProtocol() && locator.hasServer()) {
        OCResourceLocator again;
        REQUIRE(read(again, standard(locator.getText())));
        if (!model.resource.empty())
            compare(again, model);
        REQUIRE(again.getText() == locator.getText());
    }

    const std::string part = text.substr(0, size % 11);
    locator.setServer(string(part));
    model.server = part;
    compare(locator, model);
    locator.setResource(string(part));
    model.resource = part;
    locator.setPort(static_cast<unsigned int>(size));
    model.port = static_cast<std::uint32_t>(size);
    locator.getParameters().addElement(string(part), string(text));
    model.parameters.pairs.emplace_back(part, text);
    compare(OCResourceLocator(locator), model);
    locator.clearServer();
    model.server.clear();
    compare(locator, model);
    return 0;
}
