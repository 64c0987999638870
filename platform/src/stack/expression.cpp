#include "stack/expression.h"

#include <utility>

namespace qxplatform
{
namespace
{

class Evaluation
{
public:
    Evaluation(TableBytes code, const Registers& registers, const StackMemory& memory)
        : _code(code),
          _reader(code),
          _registers(registers),
          _memory(memory)
    {
    }

    void Push(std::uintptr_t value)
    {
        if (_depth == kMostValues)
            _hasFailed = true;
        else
            _values[_depth++] = value;
    }

    bool Run(std::uintptr_t& result)
    {
        constexpr unsigned kMostSteps = 1000; // jumps may form a loop
        for (unsigned step = 0; !_reader.IsAtEnd(); ++step)
        {
            Execute(_reader.Read<std::uint8_t>());
            if (_hasFailed || _reader.HasFailed() || step == kMostSteps)
                return false;
        }
        result = Pop();
        return !_hasFailed;
    }

private:
    static constexpr unsigned kMostValues = 16;

    std::uintptr_t Pop()
    {
        if (_depth > 0)
            return _values[--_depth];
        _hasFailed = true;
        return 0;
    }

    void PushSigned(std::int64_t value) { Push(static_cast<std::uintptr_t>(value)); }

    void PushRegister(std::uint64_t number, std::int64_t offset)
    {
        if (number < kRegisterCount && _registers.Has(static_cast<unsigned>(number)))
            Push(_registers.value[number] + static_cast<std::uintptr_t>(offset));
        else
            _hasFailed = true;
    }

    void Dereference(unsigned size)
    {
        std::uintptr_t value = 0;
        const std::uintptr_t address = Pop();
        if (_hasFailed || size == 0 || size > sizeof value || !_memory.Read(address, value))
        {
            _hasFailed = true;
            return;
        }
        Push(size == sizeof value ? value : value & ((std::uintptr_t{1} << 8 * size) - 1));
    }

    void Jump(std::int16_t distance)
    {
        const std::ptrdiff_t target = _reader.At() - _code.begin + distance;
        if (target < 0 || target > static_cast<std::ptrdiff_t>(_code.Size()))
            _hasFailed = true;
        else
            _reader = TableReader({_code.begin + target, _code.end});
    }

    void Pick(unsigned index)
    {
        if (index < _depth)
            Push(_values[_depth - 1 - index]);
        else
            _hasFailed = true;
    }

    void Execute(std::uint8_t code)
    {
        constexpr std::uint8_t kLiteral = 0x30;
        constexpr std::uint8_t kBasedOnRegister = 0x70;
        if (code >= kLiteral && code < kLiteral + 32)
            return Push(code - kLiteral);
        if (code >= kBasedOnRegister && code < kBasedOnRegister + 32)
            return PushRegister(code - kBasedOnRegister, _reader.ReadSleb());
        switch (code)
        {
        case 0x03: // addr
        case 0x0E: // const8u
        case 0x0F: // const8s
            return Push(_reader.Read<std::uint64_t>());
        case 0x06: // deref
            return Dereference(8);
        case 0x08: // const1u
            return Push(_reader.Read<std::uint8_t>());
        case 0x09: // const1s
            return PushSigned(_reader.Read<std::int8_t>());
        case 0x0A: // const2u
            return Push(_reader.Read<std::uint16_t>());
        case 0x0B: // const2s
            return PushSigned(_reader.Read<std::int16_t>());
        case 0x0C: // const4u
            return Push(_reader.Read<std::uint32_t>());
        case 0x0D: // const4s
            return PushSigned(_reader.Read<std::int32_t>());
        case 0x10: // constu
            return Push(_reader.ReadUleb());
        case 0x11: // consts
            return PushSigned(_reader.ReadSleb());
        case 0x12: // dup
            return Pick(0);
        case 0x13: // drop
            Pop();
            return;
        case 0x14: // over
            return Pick(1);
        case 0x15: // pick
            return Pick(_reader.Read<std::uint8_t>());
        case 0x16: // swap
            if (_depth < 2)
                _hasFailed = true;
            else
                std::swap(_values[_depth - 1], _values[_depth - 2]);
            return;
        case 0x23: // plus_uconst
            return Push(Pop() + _reader.ReadUleb());
        case 0x28: // bra
        {
            const auto distance = _reader.Read<std::int16_t>();
            if (Pop() != 0)
                Jump(distance);
            return;
        }
        case 0x2F: // skip
            return Jump(_reader.Read<std::int16_t>());
        case 0x92: // bregx
        {
            const std::uint64_t number = _reader.ReadUleb();
            return PushRegister(number, _reader.ReadSleb());
        }
        case 0x94: // deref_size
            return Dereference(_reader.Read<std::uint8_t>());
        case 0x96: // nop
            return;
        case 0x19: // abs
        case 0x1F: // neg
        case 0x20: // not
            return Push(Compute(code, Pop(), 0));
        default:
        {
            const std::uintptr_t right = Pop();
            Push(Compute(code, Pop(), right));
        }
        }
    }

    // Computes an operation; `right` is the value on top of the stack.
    std::uintptr_t Compute(std::uint8_t code, std::uintptr_t left, std::uintptr_t right)
    {
        const auto signedLeft = static_cast<std::intptr_t>(left);
        const auto signedRight = static_cast<std::intptr_t>(right);
        switch (code)
        {
        case 0x19: // abs
            return signedLeft < 0 ? 0 - left : left;
        case 0x1A: // and
            return left & right;
        case 0x1C: // minus
            return left - right;
        case 0x1E: // mul
            return left * right;
        case 0x1F: // neg
            return 0 - left;
        case 0x20: // not
            return ~left;
        case 0x21: // or
            return left | right;
        case 0x22: // plus
            return left + right;
        case 0x24: // shl
            return right < 64 ? left << right : 0;
        case 0x25: // shr
            return right < 64 ? left >> right : 0;
        case 0x26: // shra
            return static_cast<std::uintptr_t>(signedLeft >> (right < 64 ? right : 63));
        case 0x27: // xor
            return left ^ right;
        case 0x29: // eq
            return left == right;
        case 0x2A: // ge
            return signedLeft >= signedRight;
        case 0x2B: // gt
            return signedLeft > signedRight;
        case 0x2C: // le
            return signedLeft <= signedRight;
        case 0x2D: // lt
            return signedLeft < signedRight;
        case 0x2E: // ne
            return left != right;
        default: // division and other operations, which don't occur in unwind tables
            _hasFailed = true;
            return 0;
        }
    }

    const TableBytes _code;
    TableReader _reader;
    const Registers& _registers;
    const StackMemory& _memory;
    std::uintptr_t _values[kMostValues];
    unsigned _depth = 0;
    bool _hasFailed = false;
};

} // namespace

bool Evaluate(const std::uint8_t* expression, TableBytes table, const Registers& registers, const StackMemory& memory,
    const std::uintptr_t* start, std::uintptr_t& result)
{
    if (!table.Contains(expression))
        return false;
    TableReader reader({expression, table.end});
    const TableBytes code = reader.Take(reader.ReadUleb());
    if (reader.HasFailed())
        return false;
    Evaluation evaluation(code, registers, memory);
    if (start != nullptr)
        evaluation.Push(*start);
    return evaluation.Run(result);
}

} // namespace qxplatform
