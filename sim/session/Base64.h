#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace montala::sim {

// Standard base64 (RFC 4648, with padding), for binary blocks in session files.
class Base64 {
public:
    static std::string encode(const std::vector<unsigned char>& bytes);
    // False for text that is not base64; `bytes` is then unchanged.
    static bool decode(std::string_view text, std::vector<unsigned char>& bytes);
};

} // namespace montala::sim
