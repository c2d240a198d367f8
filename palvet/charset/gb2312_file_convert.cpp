#include <palvet/charset/charset_convert.h>

#include <palvet/containers/ptr_collection.h>
#include <palvet/files/file_utils.h>
#include <palvet/files/system_utils.h>
#include <palvet/text/buffer.h>

#include <new>

void ConvertGB2312ToUTF8_File(char const* src, char const* dest)
{
    if (src == nullptr || dest == nullptr)
        return;
    unsigned char* data = nullptr;
    unsigned long long size = ReadFileData(src, &data);
    if (size == 0 || data == nullptr)
        return;
    // A GB2312 character (two bytes) never takes more than three bytes of
    // UTF-8, so four times the input always suffices. Larger files than a
    // CBuffer can describe are left alone.
    if (size > 0xFFFFFFFFull / 4) {
        ReleaseFileData(data);
        return;
    }
    unsigned int inSize = static_cast<unsigned int>(size);
    // Zeroed: under iconv the size written is the capacity left unused, so
    // bytes past the converted text reach the file, and they must not carry
    // old heap contents.
    unsigned char* output = new (std::nothrow) unsigned char[inSize * 4u]();
    if (output == nullptr) {
        ReleaseFileData(data);
        return;
    }
    {
        CBuffer in;
        CBuffer out;
        in.BindBuffer(data, inSize);
        out.BindBuffer(output, inSize * 4u);
        if (ConvertCharset(CHARSET_GB2312, &in, CHARSET_UTF8, &out))
            WriteFileData(dest, output, out.GetAvailSize(), 0);
    }
    delete[] output;
    ReleaseFileData(data);
}

void ConvertGB2312ToUTF8_Folder(char const* srcFolder, char const* dstFolder)
{
    if (gfnUcnvConvertEx == nullptr || gGB2312Convert == nullptr || gUTF8Convert == nullptr)
        return;
    CPtrListCtrl files;
    GetLocalFolderFileList(srcFolder, nullptr, &files, nullptr, 0);
    int count = files.GetCount();
    for (int i = 0; i < count; ++i) {
        char const* name = static_cast<char const*>(files.GetAt(i));
        if (name == nullptr || *name == '\0')
            continue;
        // CombinePathName may add a separator to 1023 characters of folder.
        char source[1025];
        char dest[1025];
        CombinePathName(source, srcFolder, name);
        CombinePathName(dest, dstFolder, name);
        ConvertGB2312ToUTF8_File(source, dest);
    }
    FreeFileList(&files);
}
