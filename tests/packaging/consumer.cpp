// Uses the installed library: consumer PLUGIN

#include <OCAnsiString.h>
#include <orvabase/OCStringList.h>
#include <orvabase/orvabase.h>

#include <cstdio>
#include <cstring>
#include <dlfcn.h>

static int failures = 0;

static void check(bool condition, const char* what) {
    if (!condition) {
        std::printf("FAILED: %s\n", what);
        failures++;
    }
}

template<typename Exception>
static void checkThrown(void* plugin, const char* function, const char* name, const char* message) {
    void* symbol = dlsym(plugin, function);
    void (*call)() = nullptr;
    std::memcpy(&call, &symbol, sizeof call);
    check(call != nullptr, function);
    if (call == nullptr)
        return;
    try {
        call();
        check(false, "an exception");
    } catch (const Exception& e) {
        check(std::strcmp(e.getClass().getString(), name) == 0, e.getClass().getString());
        check(std::strcmp(e.getMessage().getString(), message) == 0, e.getMessage().getString());
    } catch (...) {
        check(false, "the exception is caught by its class");
    }
}

int main(int, char** arguments) {
    OCAnsiString path = OCAnsiString("/srv") / "data";
    check(path == "/srv/data", "path join");

    OCStringList list(StringListCaseSensitive, StringListModeSorted);
    list.addString("b");
    list.addString("a");
    check(list.getString(0) == "a", "sorted list");
    check(list.compareFunction() == &stringListCompareSensitive, "one address of a function");

    void* plugin = dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL);
    check(plugin != nullptr, "dlopen");
    if (plugin == nullptr) {
        std::puts(dlerror());
        return 1;
    }
    checkThrown<OXString_NoSuchIndex>(plugin, "throwOfThePlugin", "OXString_NoSuchIndex",
                                      "String index out of bounds (7)");
    checkThrown<OXString>(plugin, "throwOfThePlugin", "OXString_NoSuchIndex",
                          "String index out of bounds (7)");
    checkThrown<OXString_NoSuchIndex>(plugin, "throwOfTheLibrary", "OXString_NoSuchIndex",
                                      "String index out of bounds (4)");
    checkThrown<OXAutoException>(plugin, "throwOfAnUnknownClass", "OXPlugin_Refused",
                                 "Refused by the plugin");
    std::puts(failures == 0 ? "consumer: ok" : "consumer: failed");
    return failures == 0 ? 0 : 1;
}
