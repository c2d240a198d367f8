// A shared library that says which copy of it was loaded.
extern "C" __attribute__((visibility("default"))) char const* palvet_probe_where() { return PALVET_PROBE_WHERE; }
