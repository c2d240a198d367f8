#include <palvet/files/system_utils.h>

#include <palvet/core/debug_output.h>
#include <palvet/files/file_utils.h>
#include <palvet/text/simple_string.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

void ConvertTmToSystemTime(tm const* from, tagSYSTEMTIME* to)
{
    if (from == nullptr || to == nullptr)
        return;
    to->wSecond = from->tm_sec;
    to->wMinute = from->tm_min;
    to->wHour = from->tm_hour;
    to->wDay = from->tm_mday;
    to->wMonth = from->tm_mon;
    to->wYear = from->tm_year;
    to->wDayOfWeek = from->tm_wday;
    to->wDayOfYear = from->tm_yday;
}

void ConvertSystemTimeToTm(tagSYSTEMTIME const* from, tm* to)
{
    if (from == nullptr || to == nullptr)
        return;
    to->tm_sec = from->wSecond;
    to->tm_min = from->wMinute;
    to->tm_hour = from->wHour;
    to->tm_mday = from->wDay;
    to->tm_mon = from->wMonth;
    to->tm_year = from->wYear;
    to->tm_wday = from->wDayOfWeek;
    to->tm_yday = from->wDayOfYear;
}

void DumpSystemTime(char const* title, tagSYSTEMTIME const* time)
{
    if (title == nullptr)
        title = "system time is:";
    if (time == nullptr) {
        DbgOutput(1, "%s:1900/00/00 00:00:00\n", title);
        return;
    }
    DbgOutput(1, "%s:%04d/%02d/%02d %02d:%02d:%02d\n", title, time->wYear, time->wMonth, time->wDay, time->wHour,
              time->wMinute, time->wSecond);
}

int StringToSystemTime(char const* text, tagSYSTEMTIME* time)
{
    if (text == nullptr || time == nullptr)
        return 0;
    return sscanf(text, "%04d/%02d/%02d %02d:%02d:%02d", &time->wYear, &time->wMonth, &time->wDay, &time->wHour,
                  &time->wMinute, &time->wSecond);
}

void CreateUUID_Random(tagUUID* uuid)
{
    if (uuid == nullptr)
        return;
    uuid->timeLow = static_cast<unsigned int>(rand());
    uuid->timeMid = static_cast<unsigned short>(rand());
    uuid->timeHigh = static_cast<unsigned short>(rand());
    uuid->clockSeq = static_cast<unsigned short>(rand());
    uuid->nodeHigh = static_cast<unsigned short>(rand());
    uuid->nodeLow = static_cast<unsigned int>(rand());
}

void UUIDToString(tagUUID* uuid, CSimpleStringA* out)
{
    if (uuid == nullptr || out == nullptr)
        return;
    out->Format("%08x-%04x-%04x-%04x-%04x%08x", uuid->timeLow, uuid->timeMid, uuid->timeHigh, uuid->clockSeq,
                uuid->nodeHigh, uuid->nodeLow);
}

void GetProductID(char* buffer, int size)
{
    if (buffer == nullptr || size < 2)
        return;
    memset(buffer, 0, static_cast<size_t>(size));
    char const* path = "/sys/class/dmi/id/product_uuid";
    FILE* file = fopen(path, "rb");
    if (file == nullptr) {
        DbgOutput(1, "can not open %s, error:%s\n", path, strerror(errno));
        return;
    }
    char text[64] = {};
    unsigned int got = FileRead(file, text, 63);
    text[got] = '\0';
    DbgOutput(1, "read size=%d, productid=%s\n", static_cast<int>(got), text);
    fclose(file);
    int written = 0;
    for (char const* p = text; *p != '\0' && *p != '\n' && written < size - 1; ++p)
        if (*p != '-')
            buffer[written++] = *p;
}
