// ImageHeaders.h - what an image file is, from its first bytes, and the
// header fields some readers size their buffers from, checked against the
// real file before any reader sees it.
#pragma once

#include <cstdint>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvane {

// Random access to a file's bytes through a small window; reads past the
// end give nothing.
class FileBytes {
public:
    explicit FileBytes(const std::string& name);
    bool opened() const { return opened_; }
    std::uint64_t size() const { return size_; }
    std::optional<std::uint8_t> at(std::uint64_t offset);
    std::optional<std::uint32_t> u32(std::uint64_t offset, bool bigEndian);

private:
    std::ifstream in_;
    bool opened_ = false;
    std::uint64_t size_ = 0;
    std::uint64_t windowStart_ = 0;
    std::vector<std::uint8_t> window_;
};

// The format name the image library uses for a file whose first bytes are
// these ("png", "openexr", "dpx", ...); empty when they say nothing.
std::string formatByContent(std::string_view firstBytes);

// What is wrong with the header of a file of this format, as a message
// after the file's name; nothing when the fields we know of fit the file.
std::optional<std::string> headerFault(const std::string& format, FileBytes& file);

} // namespace korvane
