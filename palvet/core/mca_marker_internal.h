#ifndef PALVET_CORE_MCA_MARKER_INTERNAL_H
#define PALVET_CORE_MCA_MARKER_INTERNAL_H

// Marks the body of a hot loop for scripts/neon-mca and scripts/x86-mca,
// which compile the kernels with PALVET_MCA_MARKERS defined and read the
// instructions between the two assembly comments. Without it (every real
// build) the marks are nothing at all.
#if defined(PALVET_MCA_MARKERS) && (defined(__arm__) || defined(__aarch64__))
#define PALVET_MCA_BEGIN(name) asm volatile("@ palvet-mca-begin " name)
#define PALVET_MCA_END(name) asm volatile("@ palvet-mca-end " name)
// The same marks inside a loop written in assembly.
#define PALVET_MCA_TEXT_BEGIN(name) "@ palvet-mca-begin " name "\n"
#define PALVET_MCA_TEXT_END(name) "@ palvet-mca-end " name "\n"
#elif defined(PALVET_MCA_MARKERS) && defined(__x86_64__)
// scripts/x86-mca reads the same marks in x86 assembly.
#define PALVET_MCA_BEGIN(name) asm volatile("# palvet-mca-begin " name)
#define PALVET_MCA_END(name) asm volatile("# palvet-mca-end " name)
#define PALVET_MCA_TEXT_BEGIN(name) "# palvet-mca-begin " name "\n"
#define PALVET_MCA_TEXT_END(name) "# palvet-mca-end " name "\n"
#else
#define PALVET_MCA_BEGIN(name) static_cast<void>(0)
#define PALVET_MCA_END(name) static_cast<void>(0)
#define PALVET_MCA_TEXT_BEGIN(name) ""
#define PALVET_MCA_TEXT_END(name) ""
#endif

#endif
