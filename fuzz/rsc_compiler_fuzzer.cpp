// rsc_compiler_fuzzer.cpp - the resource compiler on any source text.
//
// A source must compile or be refused with a CompileError (or a
// korvane::Error for a file the layout cannot hold); nothing else may escape.
// What compiles must survive the round trip the compiler promises: the file
// dumps and compiles back to the same bytes.
#include <cstdint>
#include <string>

#include "RscCompiler.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const korvane::rsc::SourceText source{"fuzz.json", std::string(reinterpret_cast<const char*>(data), size)};
    std::vector<std::uint8_t> compiled;
    try {
        compiled = korvane::rsc::compileSources({source});
    } catch (const korvane::Error&) {
        return 0;
    }
    const std::string dumped = korvane::rsc::dumpText(korvane::ResourceFile::parse(compiled, "fuzz.rsc"));
    if (korvane::rsc::compileSources({{"dump.json", dumped}}) != compiled)
        __builtin_trap();
    return 0;
}
