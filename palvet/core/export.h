#ifndef PALVET_CORE_EXPORT_H
#define PALVET_CORE_EXPORT_H

// Marks the library's public interface. Everything else is built with hidden
// visibility, so only what carries this macro appears in the export table.
#if defined(__GNUC__) || defined(__clang__)
#define PALVET_API __attribute__((visibility("default")))
#else
#define PALVET_API
#endif

#endif
