#include "dbghelp/variables.h"

#include "dbghelp/frame_place.h"

#include <cstdlib>
#include <memory>

#include <dwarf.h>

namespace qxplatform
{
namespace
{

// The frame address of the interface is this far below the canonical frame address.
constexpr std::int64_t kFrameToCanonical = 16;
constexpr int kDeepestScope = 100;

struct FreeRules
{
    void operator()(Dwarf_Frame* rules) const { std::free(rules); }
};

class VariableLister
{
public:
    VariableLister(SymbolModule& module, Dwarf_Die function, Dwarf_Addr address)
        : _module(module),
          _function(function),
          _address(address),
          _rules(module.FrameRules(address + module.Bias()))
    {
        ListScope(function, 0);
        for (auto scope = _scopes.rbegin(); scope != _scopes.rend(); ++scope)
            for (Variable& local : *scope)
                _parameters.push_back(std::move(local));
    }

    std::vector<Variable> Take() { return std::move(_parameters); }

private:
    void ListScope(Dwarf_Die scope, int depth)
    {
        Dwarf_Die die;
        if (depth > kDeepestScope || dwarf_child(&scope, &die) != 0)
            return;
        const std::size_t own = _scopes.size();
        _scopes.emplace_back();
        do
        {
            switch (dwarf_tag(&die))
            {
            case DW_TAG_formal_parameter:
                Add(die, _parameters, true);
                break;
            case DW_TAG_variable:
                Add(die, _scopes[own], false);
                break;
            case DW_TAG_lexical_block:
                if (dwarf_haspc(&die, _address) == 1)
                    ListScope(die, depth + 1);
                break;
            }
        } while (dwarf_siblingof(&die, &die) == 0);
    }

    void Add(Dwarf_Die& die, std::vector<Variable>& list, bool isParameter)
    {
        Dwarf_Attribute attribute;
        bool isDeclaration = false;
        const char* const name = dwarf_formstring(dwarf_attr_integrate(&die, DW_AT_name, &attribute));
        if (name == nullptr ||
            (dwarf_formflag(dwarf_attr(&die, DW_AT_declaration, &attribute), &isDeclaration) == 0 && isDeclaration))
            return;
        Variable variable;
        variable.name = name;
        variable.isParameter = isParameter;
        variable.type = _module.Types().TypeOf(die);
        variable.size = _module.Types().Length(variable.type).value_or(0);
        if (const std::optional<FramePlace> place = PlaceOf(die, _function, _address, _rules.get()))
        {
            variable.isInFrame = place->isInFrame;
            variable.address = place->isInFrame
                                   ? static_cast<std::uint64_t>(WrappingSum(place->address, kFrameToCanonical))
                                   : static_cast<std::uint64_t>(place->address) + _module.Bias();
        }
        list.push_back(std::move(variable));
    }

    SymbolModule& _module;
    Dwarf_Die _function;
    Dwarf_Addr _address;
    std::unique_ptr<Dwarf_Frame, FreeRules> _rules;
    std::vector<Variable> _parameters;
    std::vector<std::vector<Variable>> _scopes; // outermost first
};

} // namespace

std::vector<Variable> ListVariables(SymbolModule& module, std::uint64_t address)
{
    const std::optional<Dwarf_Die> function = module.FindFunction(address);
    if (!function)
        return {};
    return VariableLister(module, *function, address - module.Bias()).Take();
}

} // namespace qxplatform
