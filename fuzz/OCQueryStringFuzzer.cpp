// Query strings against a model that goes through the text one character at a time. The input is a
// text up to its first line end; every byte behind that is an operation on the query, with names
// and values from the rest of the input.

#include "OCQueryString.h"

#include "Require.h"

#include "../tests/support/LocatorModel.h"

#include <algorithm>
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

void compare(const OCQueryString& query, const QueryModel& model) {
    REQUIRE(query.getCount() == model.pairs.size());
    for (unsigned long i = 0; i < query.getCount(); ++i) {
        REQUIRE(standard(query.getName(i)) == model.pairs[i].first);
        REQUIRE(standard(query.getValue(i)) == model.pairs[i].second);
    }
}

void lookUp(const OCQueryString& query, const QueryModel& model, const std::string& name) {
    const std::vector<std::size_t> places = model.places(name);
    unsigned long index = 4711;
    REQUIRE(query.indexOf(string(name), index) == !places.empty());
    REQUIRE(index == (places.empty() ? 4711 : places[0]));
    REQUIRE(query.contains(string(name)) == !places.empty());
    REQUIRE(query.countElement(string(name)) == places.size());
    REQUIRE(standard(query.getValue(string(name), "default")) ==
            (places.empty() ? "default" : model.pairs[places[0]].second));
    try {
        REQUIRE(standard(query.getValue(string(name))) == model.pairs.at(places.at(0)).second);
    } catch (const OXQueryString_NoSuchName& failure) {
        REQUIRE(places.empty());
        REQUIRE(standard(failure.getMessage()) == "Query element does not exist (" + name + ")");
    }
}

void apply(OCQueryString& query, QueryModel& model, int operation, const std::string& name,
           const std::string& value) {
    switch (operation % 5) {
    case 0:
        query.addElement(string(name), string(value));
        model.pairs.emplace_back(name, value);
        break;
    case 1:
        query.setValue(string(name), string(value));
        model.setValue(name, value);
        break;
    case 2:
        query.removeElement(string(name));
        model.remove(name);
        break;
    case 3: {
        const unsigned long index = static_cast<unsigned long>(operation / 5);
        try {
            query.removeElement(index);
            REQUIRE(index < model.pairs.size());
            model.pairs.erase(model.pairs.begin() + static_cast<std::ptrdiff_t>(index));
        } catch (const OXQueryString_NoSuchIndex&) {
            REQUIRE(index >= model.pairs.size());
        }
        break;
    }
    default: // its own texts as arguments
        if (query.getCount() != 0) {
            const std::string own = model.pairs[0].first;
            query.setValue(query.getName(0), query.getName(0));
            model.setValue(own, own);
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string input(reinterpret_cast<const char*>(data), size);
    const std::size_t end = std::min(input.find('\n'), input.size());
    const std::string text = input.substr(0, end);
    const std::string program = input.substr(std::min(end + 1, input.size()));

    OCQueryString query(string(text));
    QueryModel model;
    model.setText(text);
    compare(query, model);

    // What was read has names, so writing it loses nothing.
    const OCAnsiString written = query.getText();
    REQUIRE(standard(written) == model.getText(0));
    REQUIRE(standard(query.getText(QueryStringFormatHtml)) == model.getText(1));
    compare(OCQueryString(written), model);
    REQUIRE(OCQueryString(written).getText() == written);

    for (std::size_t i = 0; i < program.size() && i < 64; ++i) {
        const std::string name = program.substr(i, i % 4);
        const std::string value = program.substr(i / 2, i % 7);
        apply(query, model, static_cast<unsigned char>(program[i]), name, value);
        compare(query, model);
        lookUp(query, model, name);
    }
    if (query.getCount() != 0)
        lookUp(query, model, model.pairs.back().first);
    REQUIRE(standard(query.getText()) == model.getText(0));

    OCQueryString copy(query);
    compare(copy, model);
    copy.setText(query.getText());
    QueryModel again;
    again.setText(model.getText(0));
    compare(copy, again);
    return 0;
}
