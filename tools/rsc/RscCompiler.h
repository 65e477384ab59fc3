// RscCompiler.h - compiling resource sources (JSON) into a resource file and
// dumping any resource file back to sources.
//
// A source file holds one of:
//   - a flare style:   {"style": 1, "name": ..., "elements": [...]}
//   - a dialog:        {"dialog": 16001, "title": ..., "size": ..., "items": [...]}
//   - a bundle, as the dumper prints it: {"styles": [...], "dialogs": [...],
//     "resources": [...]} with styles and dialogs in the forms above and any
//     other resource as hex.
// glintwave/styles/README.md describes every field.
//
// The round trips hold exactly: a source in canonical form compiles and dumps
// back to the same text, and a file this compiler wrote dumps and compiles
// back to the same bytes.
#pragma once

#include "korvane/ResourceFile.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace korvane::rsc {

// "<source file>: <style, element or dialog item>: <problem>".
struct CompileError : Error {
    using Error::Error;
};

struct SourceText {
    std::string fileName;  // for messages
    std::string text;
};

// The bytes of a resource file holding everything the sources describe.
std::vector<std::uint8_t> compileSources(const std::vector<SourceText>& sources);
// Reads the files (messages name them as given) and compiles them.
std::vector<std::uint8_t> compileFiles(const std::vector<std::filesystem::path>& paths);

// The canonical text of one source: what dumping its compiled form prints.
std::string canonicalText(const SourceText& source);

// The whole file as one bundle document.
std::string dumpText(const ResourceFile& file);

// The file as separate sources: "NN-name.json" per style, "dialog-ID.json"
// per dialog, and "resources.json" for whatever else the file holds.
struct DumpedSource {
    std::string fileName;
    std::string text;
};
std::vector<DumpedSource> dumpSources(const ResourceFile& file);

} // namespace korvane::rsc
