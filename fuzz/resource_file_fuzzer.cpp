// resource_file_fuzzer.cpp - the host's resource file reader, its dialog
// decoder and the dumper, on any bytes.
//
// parse() must refuse a bad file with a korvane::Error and nothing else; a
// file it accepts must give every resource and name it lists, and dumping it
// must either work or fail with a documented error. A dump of a file this
// compiler wrote compiles back to the same bytes; for any other file the
// dump's own compile must be stable (compile, dump, compile gives the same
// bytes twice).
#include <cstdint>
#include <vector>

#include "RscCompiler.h"
#include "korvane/DialogTemplate.h"
#include "korvane/ResourceFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::optional<korvane::ResourceFile> file;
    try {
        file = korvane::ResourceFile::parse(std::vector<std::uint8_t>(data, data + size), "fuzz.rsc");
    } catch (const korvane::Error&) {
        return 0;
    }
    for (const std::uint32_t type : file->types()) {
        for (const std::int16_t id : file->ids(type)) {
            const auto bytes = file->get(type, id);
            if (!bytes)
                __builtin_trap();
            (void)file->name(type, id);
            if (type == korvane::kDialogResType) {
                try {
                    (void)korvane::decodeDialogTemplate(*bytes);
                } catch (const korvane::Error&) {
                }
            }
        }
    }
    std::string dumped;
    try {
        dumped = korvane::rsc::dumpText(*file);
    } catch (const korvane::Error&) {
        return 0;
    }
    std::vector<std::uint8_t> compiled;
    try {
        compiled = korvane::rsc::compileSources({{"dump.json", dumped}});
    } catch (const korvane::Error&) {
        return 0;
    }
    const std::string again = korvane::rsc::dumpText(korvane::ResourceFile::parse(compiled, "again.rsc"));
    if (korvane::rsc::compileSources({{"again.json", again}}) != compiled)
        __builtin_trap();
    return 0;
}
