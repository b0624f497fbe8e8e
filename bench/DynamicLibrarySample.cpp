// The shared object that the benchmark of dynamic libraries loads.

extern "C" int sampleCode() {
    return 1;
}
