// Stands in for a separate libiconv.so: forwards the three calls to the C
// library's own iconv. The C library is reached through its handle so that
// these definitions do not resolve to themselves.

#include <dlfcn.h>
#include <cstddef>

namespace {

void* Resolve(char const* name)
{
    static void* libc = dlopen("libc.so.6", RTLD_LAZY | RTLD_NOLOAD);
    return libc != nullptr ? dlsym(libc, name) : nullptr;
}

}  // namespace

extern "C" {

__attribute__((visibility("default"))) void* iconv_open(char const* to, char const* from)
{
    using Fn = void* (*)(char const*, char const*);
    static Fn fn = reinterpret_cast<Fn>(Resolve("iconv_open"));
    return fn != nullptr ? fn(to, from) : reinterpret_cast<void*>(-1);
}

__attribute__((visibility("default"))) size_t iconv(void* cd, char** in, size_t* inLeft, char** out,
                                                    size_t* outLeft)
{
    using Fn = size_t (*)(void*, char**, size_t*, char**, size_t*);
    static Fn fn = reinterpret_cast<Fn>(Resolve("iconv"));
    return fn != nullptr ? fn(cd, in, inLeft, out, outLeft) : static_cast<size_t>(-1);
}

__attribute__((visibility("default"))) int iconv_close(void* cd)
{
    using Fn = int (*)(void*);
    static Fn fn = reinterpret_cast<Fn>(Resolve("iconv_close"));
    return fn != nullptr ? fn(cd) : -1;
}
}
