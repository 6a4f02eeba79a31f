#include "sim/session/Base64.h"

namespace montala::sim {

namespace {

const char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

int valueOf(char c)
{
    if (c >= 'A' && c <= 'Z')
        return c - 'A';
    if (c >= 'a' && c <= 'z')
        return c - 'a' + 26;
    if (c >= '0' && c <= '9')
        return c - '0' + 52;
    if (c == '+')
        return 62;
    if (c == '/')
        return 63;
    return -1;
}

} // namespace

std::string Base64::encode(const std::vector<unsigned char>& bytes)
{
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const unsigned value = (bytes[i] << 16) | (i + 1 < bytes.size() ? bytes[i + 1] << 8 : 0)
                               | (i + 2 < bytes.size() ? bytes[i + 2] : 0);
        text += alphabet[(value >> 18) & 63];
        text += alphabet[(value >> 12) & 63];
        text += i + 1 < bytes.size() ? alphabet[(value >> 6) & 63] : '=';
        text += i + 2 < bytes.size() ? alphabet[value & 63] : '=';
    }
    return text;
}

bool Base64::decode(std::string_view text, std::vector<unsigned char>& bytes)
{
    if (text.size() % 4 != 0)
        return false;
    std::vector<unsigned char> result;
    result.reserve(text.size() / 4 * 3);
    for (std::size_t i = 0; i < text.size(); i += 4) {
        const bool last = i + 4 == text.size();
        int values[4];
        int padding = 0;
        for (int k = 0; k < 4; ++k) {
            const char c = text[i + k];
            if (c == '=' && last && k >= 2) {
                values[k] = 0;
                ++padding;
            } else if (padding > 0 || (values[k] = valueOf(c)) < 0) {
                return false;
            }
        }
        const unsigned value = (values[0] << 18) | (values[1] << 12) | (values[2] << 6) | values[3];
        result.push_back(static_cast<unsigned char>(value >> 16));
        if (padding < 2)
            result.push_back(static_cast<unsigned char>((value >> 8) & 0xFF));
        if (padding < 1)
            result.push_back(static_cast<unsigned char>(value & 0xFF));
    }
    bytes = std::move(result);
    return true;
}

} // namespace montala::sim
