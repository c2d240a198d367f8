// Configuration reading and editing on arbitrary text: the first byte picks
// how much of the input is the key, the next part the new value, the rest
// the configuration text.
#include <palvet/palvet.h>

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    if (size < 2)
        return 0;
    size_t keyLength = data[0] % 16, valueLength = data[1] % 16;
    std::string rest(reinterpret_cast<char const*>(data + 2), size - 2);
    std::string key = rest.substr(0, keyLength);
    std::string value = rest.substr(std::min(keyLength, rest.size()), valueLength);
    std::string text = rest.substr(std::min(keyLength + valueLength, rest.size()));

    CSimpleStringA config, found;
    config.Set(text.c_str(), static_cast<int>(text.size()));
    GetAttrValueFromConfig(&config, key.c_str(), &found);
    SetAttrValueToConfig(&config, key.c_str(), value.c_str());
    CSimpleStringA again;
    // After a write the key is always found (the value may differ when an
    // earlier line's text matched only ignoring case).
    if (!GetAttrValueFromConfig(&config, key.c_str(), &again))
        __builtin_trap();
    return 0;
}
