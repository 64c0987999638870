// The resources of a module: the compiled .res file that the build has linked into it as an ELF note.
#pragma once

#include <minwindef.h>

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace qxplatform
{

// The type or name of a resource: a number, or where `text` isn't empty a text.
struct ResourceName
{
    WORD number = 0;
    std::u16string_view text;

    // As callers write them: a small number in place of a pointer, or a text, of which "#12" means a number.
    static ResourceName Of(LPCWSTR name);

    friend bool operator==(const ResourceName& a, const ResourceName& b);
};

struct Resource
{
    const std::byte* entry = nullptr; // where its header begins: the handle that callers get
    ResourceName type;
    ResourceName name;
    WORD language = 0;
    const std::byte* data = nullptr;
    DWORD size = 0;
};

// All resources of a module (null: the program), in the order of its files. Empty with an error if there is no such
// module.
std::vector<Resource> ResourcesOf(HMODULE module);

// Reads the entry at the beginning of what is left of an image and moves on behind it. Nothing at the end, and where
// the image is damaged.
std::optional<Resource> ReadResource(const std::byte*& at, const std::byte* end);

} // namespace qxplatform
