// JsonText.cpp - canonical JSON printing and checked reading of objects.

#include "JsonText.h"

#include "korvane/MacRoman.h"

#include <cstdint>

namespace korvane::rsc {
namespace {

// Longest inline form of an array or object of plain values.
constexpr std::size_t kInlineWidth = 72;

std::string scalarText(const Json& value)
{
    // Keeps UTF-8 as it is rather than escaping it.
    return value.dump(-1, ' ', false, Json::error_handler_t::strict);
}

bool isContainer(const Json& value)
{
    return value.is_array() || value.is_object();
}

void print(const Json& value, std::size_t indent, std::string& out)
{
    if (!isContainer(value)) {
        out += scalarText(value);
        return;
    }
    const bool isObject = value.is_object();
    const char open = isObject ? '{' : '[';
    const char close = isObject ? '}' : ']';
    if (value.empty()) {
        out += open;
        out += close;
        return;
    }

    bool flat = true;
    for (const auto& child : value)
        flat = flat && !isContainer(child);
    if (flat) {
        std::string line(1, open);
        bool first = true;
        for (auto it = value.begin(); it != value.end(); ++it) {
            if (!first)
                line += ", ";
            first = false;
            if (isObject)
                line += scalarText(Json(it.key())) + ": ";
            line += scalarText(*it);
        }
        line += close;
        if (line.size() <= kInlineWidth) {
            out += line;
            return;
        }
    }

    const std::string inner(indent + 2, ' ');
    out += open;
    out += '\n';
    bool first = true;
    for (auto it = value.begin(); it != value.end(); ++it) {
        if (!first)
            out += ",\n";
        first = false;
        out += inner;
        if (isObject)
            out += scalarText(Json(it.key())) + ": ";
        print(*it, indent + 2, out);
    }
    out += '\n';
    out += std::string(indent, ' ');
    out += close;
}

std::string typeName(const Json& value)
{
    return value.type_name();
}

} // namespace

std::string printJson(const Json& value)
{
    std::string out;
    print(value, 0, out);
    out += '\n';
    return out;
}

ObjectReader::ObjectReader(const Json& value, std::string context) : object_(value), context_(std::move(context))
{
    if (!object_.is_object())
        fail("expected an object, found " + typeName(object_));
}

void ObjectReader::fail(const std::string& problem) const
{
    throw CompileError(context_.empty() ? problem : context_ + ": " + problem);
}

bool ObjectReader::has(const char* key) const
{
    return object_.contains(key);
}

const Json& ObjectReader::required(const char* key)
{
    const Json* value = optional(key);
    if (!value)
        fail(std::string("missing field \"") + key + "\"");
    return *value;
}

const Json* ObjectReader::optional(const char* key)
{
    const auto it = object_.find(key);
    if (it == object_.end())
        return nullptr;
    used_.insert(key);
    return &*it;
}

std::int64_t ObjectReader::integer(const char* key, std::int64_t min, std::int64_t max)
{
    return integerValue(required(key), min, max, context_, std::string("\"") + key + "\"");
}

std::optional<std::int64_t> ObjectReader::optionalInteger(const char* key, std::int64_t min, std::int64_t max)
{
    const Json* value = optional(key);
    if (!value)
        return std::nullopt;
    return integerValue(*value, min, max, context_, std::string("\"") + key + "\"");
}

double ObjectReader::number(const char* key)
{
    return numberValue(required(key), context_, std::string("\"") + key + "\"");
}

std::optional<double> ObjectReader::optionalNumber(const char* key)
{
    const Json* value = optional(key);
    if (!value)
        return std::nullopt;
    return numberValue(*value, context_, std::string("\"") + key + "\"");
}

std::string ObjectReader::string(const char* key)
{
    const Json& value = required(key);
    if (!value.is_string())
        fail(std::string("\"") + key + "\" must be a string, found " + typeName(value));
    return value.get<std::string>();
}

std::optional<std::string> ObjectReader::optionalString(const char* key)
{
    if (!has(key))
        return std::nullopt;
    return string(key);
}

bool ObjectReader::optionalBoolean(const char* key, bool fallback)
{
    const Json* value = optional(key);
    if (!value)
        return fallback;
    if (!value->is_boolean())
        fail(std::string("\"") + key + "\" must be true or false, found " + typeName(*value));
    return value->get<bool>();
}

void ObjectReader::finish() const
{
    for (auto it = object_.begin(); it != object_.end(); ++it) {
        if (!used_.contains(it.key()))
            fail("unknown field \"" + it.key() + "\"");
    }
}

std::int64_t integerValue(const Json& value, std::int64_t min, std::int64_t max, const std::string& context,
                          const std::string& what)
{
    const auto fail = [&](const std::string& problem) {
        throw CompileError(context.empty() ? problem : context + ": " + problem);
    };
    if (!value.is_number_integer())
        fail(what + " must be an integer, found " + (value.is_number() ? value.dump() : typeName(value)));
    const std::string range = " is out of range " + std::to_string(min) + " to " + std::to_string(max);
    if (value.is_number_unsigned() && value.get<std::uint64_t>() > static_cast<std::uint64_t>(INT64_MAX))
        fail(what + " " + value.dump() + range);
    const std::int64_t v = value.get<std::int64_t>();
    if (v < min || v > max)
        fail(what + " " + value.dump() + range);
    return v;
}

double numberValue(const Json& value, const std::string& context, const std::string& what)
{
    if (!value.is_number())
        throw CompileError((context.empty() ? "" : context + ": ") + what + " must be a number, found " +
                           typeName(value));
    return value.get<double>();
}

std::string macRomanText(const std::string& utf8, std::size_t maxBytes, const std::string& context,
                         const std::string& what)
{
    const auto fail = [&](const std::string& problem) {
        throw CompileError(context.empty() ? problem : context + ": " + problem);
    };
    std::string bad;
    const auto text = utf8ToMacRoman(utf8, &bad);
    if (!text)
        fail(what + " \"" + utf8 + "\" holds \"" + bad + "\", which Mac OS Roman cannot represent");
    if (text->size() > maxBytes)
        fail(what + " \"" + utf8 + "\" is longer than " + std::to_string(maxBytes) + " characters");
    return *text;
}

} // namespace korvane::rsc
