// Objects that exist until the process ends.
#pragma once

#include <utility>

namespace qxplatform
{

// Creates an object that is never destroyed, because static objects of other modules may use it while the process ends.
// Leak checkers find it through the static reference that holds the result.
template <class T, class... Arguments>
T& MakeForever(Arguments&&... arguments)
{
    return *new T{std::forward<Arguments>(arguments)...};
}

} // namespace qxplatform
