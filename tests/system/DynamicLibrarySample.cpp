// The shared objects that the test of dynamic libraries loads. They tell the test program when they
// are opened and closed. SAMPLE_FIRST offers code and data; SAMPLE_SECOND other code of the same
// name; SAMPLE_DEPENDENT needs what SAMPLE_FIRST offers.

extern "C" {

/// In the test program.
void sampleEvent(const char* event);

#if defined(SAMPLE_FIRST)
#define SAMPLE_NAME "first"
int sampleShared() {
    return 41;
}
int sampleCode() {
    return 1;
}
int sampleData = 17;
#elif defined(SAMPLE_SECOND)
#define SAMPLE_NAME "second"
int sampleCode() {
    return 2;
}
#else
#define SAMPLE_NAME "dependent"
int sampleShared();
int sampleCode() {
    return sampleShared() + 1;
}
#endif

__attribute__((constructor)) static void opened() {
    sampleEvent("+" SAMPLE_NAME " ");
}

__attribute__((destructor)) static void closed() {
    sampleEvent("-" SAMPLE_NAME " ");
}

} // extern "C"
