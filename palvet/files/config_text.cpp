#include <palvet/files/system_utils.h>

#include <palvet/containers/ptr_collection.h>
#include <palvet/text/simple_string.h>
#include <palvet/text/split.h>

#include <cstring>
#include <strings.h>

int GetAttrValueFromConfig(CSimpleStringA const* config, char const* key, CSimpleStringA* value)
{
    if (config == nullptr || key == nullptr || value == nullptr)
        return 0;
    CPtrListCtrl lines;
    char* copy = DevideStringByCharListA(config->GetString(), config->GetLength(), "\r\n", 2, 1, &lines, 0);
    size_t keyLength = strlen(key);
    int found = 0;
    for (int i = 0, n = lines.GetCount(); i < n && !found; ++i) {
        char const* line = static_cast<char const*>(lines.GetAt(i));
        // A line that begins with the key, ignoring case, is the key's first
        // occurrence in that line.
        if (strncasecmp(line, key, keyLength) == 0) {
            value->Set(line + keyLength, -1);
            found = 1;
        }
    }
    Internal_DelArrayA(copy);
    return found;
}

void SetAttrValueToConfig(CSimpleStringA* config, char const* key, char const* newValue)
{
    if (config == nullptr || key == nullptr || newValue == nullptr)
        return;
    CSimpleStringA old;
    if (!GetAttrValueFromConfig(config, key, &old)) {
        config->AppendFormat("%s%s\n", key, newValue);
        return;
    }
    // Case-sensitive replacement of the whole "key value" text, wherever it
    // stands.
    CSimpleStringA from, to;
    from.Format("%s%s", key, old.GetString());
    to.Format("%s%s", key, newValue);
    config->Replace(from.GetString(), to.GetString(), 0);
}
