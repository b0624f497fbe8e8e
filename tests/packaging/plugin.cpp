// A shared object that the consumer loads at run time: its exceptions have to be caught over there.

#include <OCAnsiString.h>

namespace {

class OXPlugin_Refused : public OXAutoException {
public:
    OXPlugin_Refused() {
        setClass("OXPlugin_Refused");
        setMessage("Refused by the plugin");
    }
};

} // namespace

// Thrown by the plugin's own code.
extern "C" __attribute__((visibility("default"))) void throwOfThePlugin() {
    throw OXString_NoSuchIndex(7);
}

// Thrown by the library, through the plugin.
extern "C" __attribute__((visibility("default"))) void throwOfTheLibrary() {
    OCAnsiString text("abc");
    text.remove(4, 1);
}

// A class that only the plugin knows, below a base that both know.
extern "C" __attribute__((visibility("default"))) void throwOfAnUnknownClass() {
    throw OXPlugin_Refused();
}
