// Objects that live as long as the process.
#pragma once

#include <utility>

namespace qxplatform
{

// For what other modules' static objects may still ask for while the process ends: never destroyed, and reachable from
// the static reference that holds the result, so that leak checkers know it as alive.
template <class T, class... Arguments>
T& MakeForever(Arguments&&... arguments)
{
    return *new T{std::forward<Arguments>(arguments)...};
}

} // namespace qxplatform
