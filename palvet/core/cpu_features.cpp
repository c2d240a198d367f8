#include <palvet/core/cpu_features_internal.h>

#include <atomic>
#include <cstdlib>
#include <cstring>

namespace palvet::detail {

namespace {

KernelLevel LevelFromEnvironment()
{
    char const* text = std::getenv("PALVET_KERNEL_LEVEL");
    if (text == nullptr)
        return KernelLevel::Auto;
    struct Name {
        char const* text;
        KernelLevel level;
    };
    static Name const names[] = {{"scalar", KernelLevel::Scalar}, {"0", KernelLevel::Scalar},
                                 {"sse2", KernelLevel::Sse2OrNeon}, {"neon", KernelLevel::Sse2OrNeon},
                                 {"1", KernelLevel::Sse2OrNeon}, {"avx2", KernelLevel::Avx2},
                                 {"2", KernelLevel::Avx2}, {"avx512", KernelLevel::Avx512},
                                 {"3", KernelLevel::Avx512}};
    for (Name const& n : names)
        if (std::strcmp(text, n.text) == 0)
            return n.level;
    return KernelLevel::Auto;
}

std::atomic<int>& Level()
{
    static std::atomic<int> level{static_cast<int>(LevelFromEnvironment())};
    return level;
}

}  // namespace

void SetKernelLevel(KernelLevel level)
{
    Level().store(static_cast<int>(level), std::memory_order_relaxed);
}

KernelLevel GetKernelLevel()
{
    return static_cast<KernelLevel>(Level().load(std::memory_order_relaxed));
}

bool KernelLevelAllows(KernelLevel level)
{
    int const cap = Level().load(std::memory_order_relaxed);
    return cap < 0 || static_cast<int>(level) <= cap;
}

}  // namespace palvet::detail
