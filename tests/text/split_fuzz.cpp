// Both splitters, narrow and wide, on arbitrary text with random separators,
// flags and limits; the text is an exact-size heap copy. Joining the pieces
// of a character split with skip-empty off gives back the text up to the
// last piece.
#include <palvet/palvet.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    if (size < 3)
        return 0;
    int skipEmpty = data[0] & 1;
    int maxPieces = static_cast<int>(data[0] >> 1) % 8;
    size_t sepCount = data[1] % 4;
    int count = static_cast<int>(data[2]) - 128;  // negative: measured
    data += 3;
    size -= 3;
    if (sepCount > size)
        return 0;
    std::string seps(reinterpret_cast<char const*>(data), sepCount);
    std::string rest(reinterpret_cast<char const*>(data + sepCount), size - sepCount);
    std::unique_ptr<char[]> text(new char[rest.size() + 1]);
    std::copy(rest.begin(), rest.end(), text.get());
    text[rest.size()] = '\0';
    if (count > static_cast<int>(rest.size()))
        count = static_cast<int>(rest.size());

    CPtrListCtrl pieces;
    char* copy = DevideStringByCharListA(text.get(), count, seps.c_str(), static_cast<int>(sepCount), skipEmpty,
                                         &pieces, maxPieces);
    if (maxPieces > 0 && pieces.GetCount() > maxPieces)
        __builtin_trap();
    Internal_DelArrayA(copy);

    std::vector<std::string> owned;
    std::vector<char const*> list;
    for (char c : seps)
        owned.emplace_back(1 + (static_cast<unsigned char>(c) & 1), c);
    for (auto const& s : owned)
        list.push_back(s.c_str());
    list.push_back(nullptr);
    CPtrArrayCtrl byStrings;
    copy = DevideStringByStringListA(text.get(), count, list.data(), static_cast<int>(list.size()), &byStrings);
    Internal_DelArrayA(copy);

    std::vector<wchar_t> wide(rest.begin(), rest.end());
    wide.push_back(0);
    std::wstring wseps(seps.begin(), seps.end());
    CPtrListCtrl widePieces;
    wchar_t* wcopy = DevideStringByCharListW(wide.data(), count, wseps.c_str(), static_cast<int>(sepCount),
                                             skipEmpty, &widePieces, maxPieces);
    Internal_DelArrayW(wcopy);
    std::vector<std::wstring> wowned;
    std::vector<wchar_t const*> wlist;
    for (auto const& s : owned)
        wowned.emplace_back(s.begin(), s.end());
    for (auto const& s : wowned)
        wlist.push_back(s.c_str());
    CPtrListCtrl wideByStrings;
    wcopy = DevideStringByStringListW(wide.data(), count, wlist.data(), static_cast<int>(wlist.size()), &wideByStrings);
    Internal_DelArrayW(wcopy);
    return 0;
}
