// JsonText.h - the JSON side of the resource sources: a printer that gives
// every document one canonical text, and a reader of objects that names the
// place of every mistake.
#pragma once

#include "RscCompiler.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <optional>
#include <set>
#include <string>

namespace korvane::rsc {

using Json = nlohmann::ordered_json;

// Two-space indentation; an array or object of plain values stays on one
// line while that line is short. Ends with a newline.
std::string printJson(const Json& value);

// Reads the fields of one JSON object. Every failure throws CompileError
// "<context>: <problem>"; finish() refuses fields nobody asked for, which
// catches misspelt names.
class ObjectReader {
public:
    ObjectReader(const Json& value, std::string context);

    const std::string& context() const { return context_; }
    void setContext(std::string context) { context_ = std::move(context); }
    [[noreturn]] void fail(const std::string& problem) const;

    bool has(const char* key) const;
    const Json& required(const char* key);
    const Json* optional(const char* key);

    std::int64_t integer(const char* key, std::int64_t min, std::int64_t max);
    std::optional<std::int64_t> optionalInteger(const char* key, std::int64_t min, std::int64_t max);
    double number(const char* key);
    std::optional<double> optionalNumber(const char* key);
    std::string string(const char* key);
    std::optional<std::string> optionalString(const char* key);
    bool optionalBoolean(const char* key, bool fallback);

    void finish() const;

private:
    const Json& object_;
    std::string context_;
    std::set<std::string> used_;
};

// Value checks shared by the readers; `what` names the value in messages.
std::int64_t integerValue(const Json& value, std::int64_t min, std::int64_t max, const std::string& context,
                          const std::string& what);
double numberValue(const Json& value, const std::string& context, const std::string& what);

// UTF-8 source text to Mac OS Roman, at most maxBytes long.
std::string macRomanText(const std::string& utf8, std::size_t maxBytes, const std::string& context,
                         const std::string& what);

} // namespace korvane::rsc
