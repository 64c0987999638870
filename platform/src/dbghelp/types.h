// The types of a module's variables, numbered for callers.
#pragma once

#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

#include <elfutils/libdw.h>

namespace qxplatform
{

class TypeTable
{
public:
    // The identifier of the type void, which has no entry in the debug information.
    static constexpr std::uint32_t kVoid = 1;

    // Returns the identifier of the type of an entry: a variable, a pointer, an array, an enumeration.
    std::uint32_t TypeOf(Dwarf_Die& die);

    // The queries return nothing for types without such a property. Tags are SymTagEnum values; base types have the
    // numbers of the system.
    std::optional<std::uint32_t> Tag(std::uint32_t id) const;
    std::optional<std::uint64_t> Length(std::uint32_t id) const;
    std::optional<std::uint32_t> BaseType(std::uint32_t id) const;
    // Returns the target of a pointer, the element of an array, or the base of an enumeration.
    std::optional<std::uint32_t> Inner(std::uint32_t id);
    // Returns the number of elements of an array, of all dimensions together.
    std::optional<std::uint32_t> Count(std::uint32_t id) const;

private:
    std::optional<Dwarf_Die> Get(std::uint32_t id) const;

    std::vector<Dwarf_Die> _types;
    std::unordered_map<const void*, std::uint32_t> _ids;
};

} // namespace qxplatform
