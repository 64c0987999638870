// The number of rounds that the drivers run.
#pragma once

#include <cstdlib>

namespace faults
{

// Returns the value of the environment variable QXUT_FAULT_ROUNDS, or `usual` if it isn't set.
inline int Rounds(int usual)
{
    const char* const rounds = std::getenv("QXUT_FAULT_ROUNDS");
    return rounds != nullptr ? std::atoi(rounds) : usual;
}

} // namespace faults
