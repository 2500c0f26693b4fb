#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kelvo::tests {

/// The bytes of a zip file with these entries, none of them compressed, in this order.
inline std::string zipPackage(const std::vector<std::pair<std::string, std::string>>& entries) {
    const auto append = [](std::string& bytes, std::uint32_t value, int count) {
        for (int index = 0; index < count; ++index)
            bytes += static_cast<char>(value >> (8 * index) & 0xFF);
    };
    std::array<std::uint32_t, 256> sums{};
    for (std::uint32_t byte = 0; byte < sums.size(); ++byte) {
        sums[byte] = byte;
        for (int bit = 0; bit < 8; ++bit)
            sums[byte] = sums[byte] >> 1 ^ (sums[byte] & 1 ? 0xEDB88320U : 0);
    }
    const auto checksum = [&](std::string_view contents) {
        std::uint32_t sum = ~0U;
        for (const char byte : contents)
            sum = sum >> 8 ^ sums[(sum ^ static_cast<unsigned char>(byte)) & 0xFF];
        return ~sum;
    };
    std::string bytes;
    std::string directory;
    for (const auto& [name, contents] : entries) {
        std::string facts;
        append(facts, 20, 2); // version needed
        append(facts, 0, 4);  // flags, method
        append(facts, 0x58210000, 4);
        append(facts, checksum(contents), 4);
        append(facts, static_cast<std::uint32_t>(contents.size()), 4);
        append(facts, static_cast<std::uint32_t>(contents.size()), 4);
        append(facts, static_cast<std::uint32_t>(name.size()), 2);
        append(facts, 0, 2); // extra field
        directory += "PK\x01\x02";
        append(directory, 20, 2);
        directory += facts;
        append(directory, 0, 4); // comment, disk
        append(directory, 0, 2); // attributes
        append(directory, 0, 4);
        append(directory, static_cast<std::uint32_t>(bytes.size()), 4);
        directory += name;
        bytes += "PK\x03\x04" + facts + name + contents;
    }
    const auto start = static_cast<std::uint32_t>(bytes.size());
    bytes += directory + "PK\x05\x06";
    append(bytes, 0, 4);
    append(bytes, static_cast<std::uint32_t>(entries.size()), 2);
    append(bytes, static_cast<std::uint32_t>(entries.size()), 2);
    append(bytes, static_cast<std::uint32_t>(directory.size()), 4);
    append(bytes, start, 4);
    append(bytes, 0, 2);
    return bytes;
}

} // namespace kelvo::tests
