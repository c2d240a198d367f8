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
    // After a write the key is found, as long as key and value make a
    // non-empty line of their own (an added line is glued to a last line
    // without its line end; the value may differ when an earlier line matched
    // only ignoring case).
    std::string line = std::string(key.c_str()) + value.c_str();
    std::string before = text.c_str();
    bool ownLine = before.size() == text.size() && (before.empty() || before.back() == '\n' || before.back() == '\r');
    CSimpleStringA again;
    if (ownLine && !line.empty() && line.find_first_of("\r\n") == std::string::npos &&
        !GetAttrValueFromConfig(&config, key.c_str(), &again))
        __builtin_trap();
    return 0;
}
