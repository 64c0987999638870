// Damaged files for a reader: each truncation, and copies with changed bits.
#pragma once

#include <cstddef>
#include <random>
#include <string>

namespace qxtest
{

// Returns a copy in which up to four bits are flipped.
inline std::string WithChangedBits(std::string bytes, std::mt19937& random)
{
    for (unsigned count = random() % 4 + 1; count > 0; --count)
        bytes[random() % bytes.size()] ^= static_cast<char>(1u << random() % 8);
    return bytes;
}

// Calls `check` with each truncation of the bytes and with `changes` copies that have changed bits. The copies are the
// same in each run.
template <class Check>
void Damage(const std::string& whole, int changes, const Check& check)
{
    for (std::size_t length = 0; length < whole.size(); ++length)
        check(whole.substr(0, length));
    std::mt19937 random(1);
    for (int i = 0; i < changes; ++i)
        check(WithChangedBits(whole, random));
}

// The same with `count` truncations and as many changed copies.
template <class Check>
void DamageSome(const std::string& whole, int count, const Check& check)
{
    std::mt19937 random(1);
    for (int i = 0; i < count; ++i)
    {
        check(whole.substr(0, random() % whole.size()));
        check(WithChangedBits(whole, random));
    }
}

} // namespace qxtest
