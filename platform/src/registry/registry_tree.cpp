#include "registry/registry_tree.h"

#include "base/text.h"

#include <winerror.h>

#include <algorithm>

namespace qxplatform
{

LSTATUS AppendNames(KeyPath& path, std::u16string_view text)
{
    if (text.starts_with(u'\\'))
        return ERROR_BAD_PATHNAME;
    while (!text.empty())
    {
        const std::u16string_view name = text.substr(0, text.find(u'\\'));
        text.remove_prefix(std::min(text.size(), name.size() + 1));
        if (name.empty())
            continue; // repeated or trailing backslashes
        // In the file, a control character would end the line.
        const bool printable = std::ranges::all_of(name, [](char16_t c) { return c >= u' '; });
        if (name.size() > kMaxKeyName || !printable || path.size() == kMaxKeyDepth)
            return ERROR_INVALID_PARAMETER;
        path.emplace_back(name);
    }
    return ERROR_SUCCESS;
}

std::u16string FoldName(std::u16string_view name)
{
    std::u16string folded(name);
    std::ranges::transform(folded, folded.begin(), UpperCase);
    return folded;
}

RegistryKey* RegistryKey::Find(const KeyPath& path)
{
    RegistryKey* key = this;
    for (const std::u16string& part : path)
    {
        const auto found = key->keys.find(FoldName(part));
        if (found == key->keys.end())
            return nullptr;
        key = found->second.get();
    }
    return key;
}

RegistryKey& RegistryKey::Ensure(const KeyPath& path)
{
    RegistryKey* key = this;
    for (const std::u16string& part : path)
    {
        std::unique_ptr<RegistryKey>& child = key->keys[FoldName(part)];
        if (child == nullptr)
        {
            child = std::make_unique<RegistryKey>();
            child->name = part;
        }
        key = child.get();
    }
    return *key;
}

const RegistryValue* RegistryKey::FindValue(std::u16string_view valueName) const
{
    const auto found = values.find(FoldName(valueName));
    return found != values.end() ? &found->second : nullptr;
}

RegistryValue& RegistryKey::EnsureValue(std::u16string_view valueName)
{
    const auto [place, inserted] = values.try_emplace(FoldName(valueName));
    if (inserted)
        place->second.name = valueName;
    return place->second;
}

} // namespace qxplatform
