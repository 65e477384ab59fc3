// ProjectJson.cpp - a SAX pass over the text that builds the document and
// notes where every field ends.
//
// The parser reads its input one character at a time through the iterator
// below, which publishes how far it got; each SAX event then knows its
// place in the text.

#include "ProjectJson.h"

#include "korvane/Project.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace korvane {
namespace {

class MarkingIterator {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    MarkingIterator(const char* at, const char** mark) : at_(at), mark_(mark) {}
    reference operator*() const { return *at_; }
    MarkingIterator& operator++()
    {
        ++at_;
        *mark_ = at_;
        return *this;
    }
    MarkingIterator operator++(int)
    {
        MarkingIterator before = *this;
        ++*this;
        return before;
    }
    bool operator==(const MarkingIterator& other) const { return at_ == other.at_; }
    bool operator!=(const MarkingIterator& other) const { return at_ != other.at_; }

private:
    const char* at_;
    const char** mark_;
};

bool plainWord(const std::string& key)
{
    return !key.empty() && std::all_of(key.begin(), key.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
    });
}

using Json = nlohmann::json;

// Forwards every event to the library's DOM builder and notes the offset of
// each key and value.
class LocatingSax {
public:
    LocatingSax(LocatedJson& out, const char* begin, const char* const* mark)
        : dom_(out.document, false), out_(out), begin_(begin), mark_(mark)
    {
    }

    bool null() { return noteValue(), dom_.null(); }
    bool boolean(bool value) { return noteValue(), dom_.boolean(value); }
    bool number_integer(Json::number_integer_t value) { return noteValue(), dom_.number_integer(value); }
    bool number_unsigned(Json::number_unsigned_t value) { return noteValue(), dom_.number_unsigned(value); }
    bool number_float(Json::number_float_t value, const Json::string_t& text)
    {
        return noteValue(), dom_.number_float(value, text);
    }
    bool string(Json::string_t& value) { return noteValue(), dom_.string(value); }
    bool binary(Json::binary_t& value) { return noteValue(), dom_.binary(value); }
    bool start_object(std::size_t size)
    {
        noteValue();
        levels_.push_back({false, 0, name()});
        return dom_.start_object(size);
    }
    bool key(Json::string_t& key)
    {
        current_ = fieldName(levels_.back().name, key);
        note(current_);
        return dom_.key(key);
    }
    bool end_object()
    {
        levels_.pop_back();
        return dom_.end_object();
    }
    bool start_array(std::size_t size)
    {
        noteValue();
        levels_.push_back({true, 0, name()});
        return dom_.start_array(size);
    }
    bool end_array()
    {
        levels_.pop_back();
        return dom_.end_array();
    }
    bool parse_error(std::size_t position, const std::string&, const nlohmann::detail::exception& error)
    {
        errorOffset = position;
        errorText = error.what();
        return false;
    }

    std::size_t errorOffset = 0;
    std::string errorText;

private:
    struct Level {
        bool array;
        std::size_t next;  // arrays: index of the next element
        std::string name;
    };

    // The name the value being read will have.
    std::string name() const { return current_; }

    void noteValue()
    {
        if (!levels_.empty() && levels_.back().array)
            current_ = elementName(levels_.back().name, levels_.back().next++);
        note(current_);
    }
    void note(const std::string& field) { out_.offsets[field] = static_cast<std::size_t>(*mark_ - begin_); }

    nlohmann::detail::json_sax_dom_parser<Json> dom_;
    LocatedJson& out_;
    const char* begin_;
    const char* const* mark_;
    std::vector<Level> levels_;
    std::string current_;
};

} // namespace

std::string fieldName(const std::string& parent, const std::string& key)
{
    if (!plainWord(key))
        return parent + "[\"" + key + "\"]";
    return parent.empty() ? key : parent + "." + key;
}

std::string elementName(const std::string& parent, std::size_t index)
{
    return parent + "[" + std::to_string(index) + "]";
}

std::size_t lineAt(std::string_view text, std::size_t offset)
{
    offset = std::min(offset, text.size());
    return 1 + static_cast<std::size_t>(std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(offset), '\n'));
}

LocatedJson parseLocated(std::string_view text, const std::string& sourceName)
{
    LocatedJson out;
    const char* mark = text.data();
    LocatingSax sax(out, text.data(), &mark);
    const bool parsed = Json::sax_parse(MarkingIterator(text.data(), &mark),
                                        MarkingIterator(text.data() + text.size(), &mark), &sax);
    if (!parsed) {
        // The library's text reads "[json.exception.parse_error.101] parse
        // error at line 3, column 5: syntax error ..."; keep what follows the
        // position.
        std::string reason = sax.errorText;
        if (const auto colon = reason.find(": "); colon != std::string::npos)
            reason = reason.substr(colon + 2);
        const std::size_t line = lineAt(text, sax.errorOffset > 0 ? sax.errorOffset - 1 : 0);
        throw Error(ErrorPlace{sourceName, static_cast<int>(line)}, "not valid JSON: " + reason);
    }
    return out;
}

} // namespace korvane
