#ifndef PALVET_VERSION_H
#define PALVET_VERSION_H

// The library's version. The build reads it from here, so the shared
// library's SONAME (libpalvet.so.MAJOR), the CMake package version, the
// pkg-config file and the Debian packages all carry these numbers.
// The major number changes only when the binary interface does.
#define PALVET_VERSION_MAJOR 0        // changes with the binary interface
#define PALVET_VERSION_MINOR 9        // new interface, compatible
#define PALVET_VERSION_PATCH 0        // fixes only
#define PALVET_VERSION_STRING "0.9.0" // the three numbers as text

// One number for comparisons: major * 10000 + minor * 100 + patch.
#define PALVET_VERSION (PALVET_VERSION_MAJOR * 10000 + PALVET_VERSION_MINOR * 100 + PALVET_VERSION_PATCH)

#endif
