// Objects that live as long as the process, or until the library is unloaded.
#pragma once

#include <memory>
#include <utility>

namespace qx
{

// One of them, whatever its type is.
class Kept
{
public:
    Kept() = default;
    Kept(const Kept&) = delete;
    Kept& operator=(const Kept&) = delete;
    virtual ~Kept() = default;

private:
    friend void Keep(std::unique_ptr<Kept> object);
    friend void DropForeverObjects();

    Kept* _next = nullptr;
};

void Keep(std::unique_ptr<Kept> object);

// For what static objects, and threads that nobody has ended, may still ask for while the process ends: it isn't
// destroyed then.
template <class T, class... Arguments>
T& MakeForever(Arguments&&... arguments)
{
    struct Holder final : Kept
    {
        explicit Holder(Arguments&&... given) : object(std::forward<Arguments>(given)...) {}

        T object;
    };
    auto holder = std::make_unique<Holder>(std::forward<Arguments>(arguments)...);
    T& object = holder->object;
    Keep(std::move(holder));
    return object;
}

// Destroys them all, the latest first. For the moment at which the library goes and the process stays: nobody asks for
// any of them after that.
void DropForeverObjects();

} // namespace qx
