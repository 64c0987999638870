// Smart pointers to reference-counted objects.
#pragma once

#include <unknwn.h>

#include <memory>

namespace qxtest
{

struct ComReleaser
{
    void operator()(IUnknown* object) const { object->Release(); }
};

template <class Interface>
using ComPointer = std::unique_ptr<Interface, ComReleaser>;

} // namespace qxtest
