// palvet config | uuid | product-id | time | sh | pidof
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <unistd.h>

#include "tool_common.h"

namespace tool {
namespace {

void LoadConfig(std::string const& path, CSimpleStringA* text)
{
    std::vector<unsigned char> data = ReadWhole(path, true);
    text->Set(reinterpret_cast<char const*>(data.data()), static_cast<int>(data.size()));
}

void ConfigGet(std::string const& path, std::string const& key)
{
    CSimpleStringA text, value;
    LoadConfig(path, &text);
    if (!GetAttrValueFromConfig(&text, key.c_str(), &value))
        Fail(key + ": not in " + path);
    fprintf(Out(), "%s\n", value.GetString());
}

void ConfigSet(std::string const& path, std::string const& key, std::string const& value)
{
    if (key.empty())
        BadUsage("empty key");
    if (value.find_first_of("\r\n") != std::string::npos)
        BadUsage("a value cannot hold a line end");
    CSimpleStringA text;
    if (IsFileExist(path.c_str()))
        LoadConfig(path, &text);
    SetAttrValueToConfig(&text, key.c_str(), value.c_str());
    PendingFile out(path);
    out.Write(text.GetString(), static_cast<size_t>(text.GetLength()));
    out.Commit();
}

void Uuid(int count)
{
    // The library draws from rand() without seeding it, so seed here or every
    // run would print the same identifier.
    unsigned seed = static_cast<unsigned>(time(nullptr)) ^ static_cast<unsigned>(GetTickCountUS()) ^
                    static_cast<unsigned>(getpid()) << 16;
    srand(seed);
    for (int i = 0; i < count; ++i) {
        tagUUID id;
        CreateUUID_Random(&id);
        CSimpleStringA text;
        UUIDToString(&id, &text);
        fprintf(Out(), "%s\n", text.GetString());
    }
}

void ProductId()
{
    char id[64];
    GetProductID(id, sizeof id);
    if (id[0] == '\0')
        Fail("this machine has no readable product identifier (/sys/class/dmi/id/product_uuid)");
    fprintf(Out(), "%s\n", id);
}

void Time(std::string const& text)
{
    tagSYSTEMTIME st;
    if (!text.empty()) {
        if (StringToSystemTime(text.c_str(), &st) != 6)
            BadUsage("'" + text + "' is not YYYY/MM/DD hh:mm:ss");
        tm t{};
        ConvertSystemTimeToTm(&st, &t);
        t.tm_year -= 1900;
        t.tm_mon -= 1;
        t.tm_isdst = -1;
        time_t when = mktime(&t);
        if (when == static_cast<time_t>(-1))
            Fail("'" + text + "' is not a time this machine can represent");
        fprintf(Out(), "%lld\n", static_cast<long long>(when));
        return;
    }
    time_t now = time(nullptr);
    tm local{};
    localtime_r(&now, &local);
    ConvertTmToSystemTime(&local, &st);
    // The record keeps tm's numbering (years since 1900, months from 0);
    // print the calendar date.
    fprintf(Out(), "%04d/%02d/%02d %02d:%02d:%02d\n", st.wYear + 1900, st.wMonth + 1, st.wDay, st.wHour,
           st.wMinute, st.wSecond);
}

void Sh(std::vector<std::string> const& words)
{
    std::string cmd;
    for (auto const& w : words)
        cmd += (cmd.empty() ? "" : " ") + w;
    CSimpleStringA out;
    do_syscmd(&out, "%s", cmd.c_str());
    fwrite(out.GetString(), 1, static_cast<size_t>(out.GetLength()), Out());
}

void Pidof(std::string const& name, bool fullCommand)
{
    CPtrArrayCtrl pids;
    if (fullCommand)
        GetPidListByNameWithParam(name.c_str(), &pids);
    else
        GetPidListByName(name.c_str(), &pids);
    if (pids.GetCount() == 0)
        Fail(name + ": no such process");
    for (int i = 0; i < pids.GetCount(); ++i)
        fprintf(Out(), "%s%ld", i ? " " : "", static_cast<long>(reinterpret_cast<intptr_t>(pids.GetAt(i))));
    fprintf(Out(), "\n");
}

}  // namespace

void AddSystemCommands(CLI::App& app)
{
    CLI::App* config = app.add_subcommand("config", "Read or change KEY lines of a configuration file");
    config->require_subcommand(1);
    static std::string file, key, value;
    CLI::App* get = config->add_subcommand("get", "Print the value after KEY (the key matched ignoring case)");
    get->add_option("FILE", file, "Configuration file")->required();
    get->add_option("KEY", key, "Key with its separator, e.g. Volume=")->required();
    SetAction(get, [] { ConfigGet(file, key); });
    CLI::App* set = config->add_subcommand("set", "Set the value after KEY, adding the line when it is missing");
    set->add_option("FILE", file, "Configuration file (created when missing)")->required();
    set->add_option("KEY", key, "Key with its separator, e.g. Volume=")->required();
    set->add_option("VALUE", value, "New value")->required();
    SetAction(set, [] { ConfigSet(file, key, value); });

    static int count = 1;
    CLI::App* uuid = app.add_subcommand("uuid", "Print random 128-bit identifiers");
    uuid->add_option("-n,--count", count, "How many")->capture_default_str()->check(CLI::Range(1, 1000000));
    SetAction(uuid, [] { Uuid(count); });

    CLI::App* pid = app.add_subcommand("product-id", "Print the machine's product identifier without dashes");
    SetAction(pid, [] { ProductId(); });

    static std::string when;
    CLI::App* t = app.add_subcommand("time", "Print the local time, or turn \"YYYY/MM/DD hh:mm:ss\" into seconds since 1970");
    t->add_option("TIME", when, "Local time to convert");
    SetAction(t, [] { Time(when); });

    CLI::App* sh = app.add_subcommand("sh", "Run a shell command (CMD [ARG...]) and print what it wrote");
    // Everything after "sh" belongs to the command, options included.
    sh->prefix_command();
    SetAction(sh, [sh] {
        std::vector<std::string> words = sh->remaining();
        if (words.empty())
            BadUsage("sh needs a command");
        Sh(words);
    });

    static std::string name;
    static bool full = false;
    CLI::App* pidof = app.add_subcommand("pidof", "Process ids of a program");
    pidof->add_option("NAME", name, "Program name (or whole command line with --full)")->required();
    pidof->add_flag("-f,--full", full, "Match the whole command line, ignoring case");
    SetAction(pidof, [] { Pidof(name, full); });
}

}  // namespace tool
