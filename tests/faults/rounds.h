// How long the drivers run.
#pragma once

#include <cstdlib>

namespace faults
{

// Returns QXUT_FAULT_ROUNDS of the environment, or `usual`.
inline int Rounds(int usual)
{
    const char* const rounds = std::getenv("QXUT_FAULT_ROUNDS");
    return rounds != nullptr ? std::atoi(rounds) : usual;
}

} // namespace faults
