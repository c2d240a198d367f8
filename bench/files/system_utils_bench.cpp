// Folder listing beside std::filesystem, CopyFile beside cp, and a key
// lookup in a 1,000-line configuration text.
#include <palvet/palvet.h>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

std::string ScratchRoot()
{
    char const* tmp = getenv("TMPDIR");
    return std::string(tmp && *tmp ? tmp : "/tmp") + "/palvet-bench-" + std::to_string(getpid());
}

// 10,000 files in 100 folders of 100, made once.
std::string const& Tree()
{
    static std::string root = [] {
        std::string r = ScratchRoot() + "-tree";
        for (int d = 0; d < 100; ++d) {
            std::string dir = r + "/d" + std::to_string(d);
            fs::create_directories(dir);
            for (int f = 0; f < 100; ++f)
                fclose(fopen((dir + "/f" + std::to_string(f) + (f % 2 ? ".bmp" : ".txt")).c_str(), "w"));
        }
        atexit([] { fs::remove_all(root); });
        return r;
    }();
    return root;
}

void BM_ListTree_GetSubFolderFileList(benchmark::State& state)
{
    std::string const& root = Tree();
    for (auto _ : state) {
        CPtrListCtrl files;
        GetSubFolderFileList(root.c_str(), "", &files, nullptr, 0, 1);
        benchmark::DoNotOptimize(files.GetCount());
        FreeFileList(&files);
    }
    state.SetItemsProcessed(state.iterations() * 10000);
}
BENCHMARK(BM_ListTree_GetSubFolderFileList)->Unit(benchmark::kMillisecond);

void BM_ListTree_RecursiveDirectoryIterator(benchmark::State& state)
{
    std::string const& root = Tree();
    for (auto _ : state) {
        std::vector<std::string> files;
        for (auto const& entry : fs::recursive_directory_iterator(root))
            if (!entry.is_directory())
                files.push_back(fs::relative(entry.path(), root).string());
        benchmark::DoNotOptimize(files.size());
    }
    state.SetItemsProcessed(state.iterations() * 10000);
}
BENCHMARK(BM_ListTree_RecursiveDirectoryIterator)->Unit(benchmark::kMillisecond);

// 256 MiB source, made once; the page cache holds it after the first pass.
std::string const& BigFile()
{
    static std::string path = [] {
        std::string p = ScratchRoot() + "-big";
        FILE* f = fopen(p.c_str(), "wb");
        std::string block(1 << 20, 'x');
        for (int i = 0; i < 256; ++i)
            fwrite(block.data(), 1, block.size(), f);
        fclose(f);
        atexit([] {
            unlink(path.c_str());
            unlink((path + ".copy").c_str());
        });
        return p;
    }();
    return path;
}

void BM_Copy256MiB_CopyFile(benchmark::State& state)
{
    std::string const& src = BigFile();
    for (auto _ : state)
        benchmark::DoNotOptimize(CopyFile(src.c_str(), (src + ".copy").c_str(), nullptr, 0));
    state.SetBytesProcessed(state.iterations() * (256ll << 20));
}
BENCHMARK(BM_Copy256MiB_CopyFile)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_Copy256MiB_cp(benchmark::State& state)
{
    std::string const& src = BigFile();
    std::string command = "cp '" + src + "' '" + src + ".copy'";
    for (auto _ : state)
        benchmark::DoNotOptimize(system(command.c_str()));
    state.SetBytesProcessed(state.iterations() * (256ll << 20));
}
BENCHMARK(BM_Copy256MiB_cp)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_ConfigLookup_1000Lines(benchmark::State& state)
{
    CSimpleStringA config;
    for (int i = 0; i < 1000; ++i)
        config.AppendFormat("Key%04d=value of line %d\r\n", i, i);
    char const* key = state.range(0) ? "key0999=" : "Key0000=";
    for (auto _ : state) {
        CSimpleStringA value;
        benchmark::DoNotOptimize(GetAttrValueFromConfig(&config, key, &value));
    }
}
BENCHMARK(BM_ConfigLookup_1000Lines)->Arg(0)->Arg(1);

}  // namespace
