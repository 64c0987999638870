#include "stack/frame_rule.h"

#include <algorithm>
#include <cstring>

namespace qxplatform
{
namespace
{

// The encoding of the index that every linker writes: pairs of 32-bit offsets from its start, sorted.
constexpr std::uint8_t kSortedOffsets = 0x3B;

struct IndexHead
{
    const std::uint8_t* frames = nullptr;
    std::uint64_t count = 0; // 0 if there is no sorted table
    const std::uint8_t* entries = nullptr;
};

bool ReadIndexHead(TableBytes index, IndexHead& head)
{
    constexpr std::uint8_t kVersion = 1;
    TableReader reader(index);
    const auto base = reinterpret_cast<std::uintptr_t>(index.begin);
    if (reader.Read<std::uint8_t>() != kVersion)
        return false;
    const auto framesEncoding = reader.Read<std::uint8_t>();
    const auto countEncoding = reader.Read<std::uint8_t>();
    const auto entryEncoding = reader.Read<std::uint8_t>();
    head.frames = reinterpret_cast<const std::uint8_t*>(reader.ReadPointer(framesEncoding, base));
    head.count = reader.ReadPointer(countEncoding, base);
    head.entries = reader.At();
    if (reader.HasFailed() || entryEncoding != kSortedOffsets || head.count > reader.Left() / 8)
        head.count = 0;
    return !reader.HasFailed();
}

// Reads the length of an entry and returns the rest of it. Empty at the end of the table or if it is damaged.
TableBytes ReadEntry(TableReader& reader)
{
    constexpr std::uint32_t kLong = 0xFFFFFFFF;
    const std::uint32_t length = reader.Read<std::uint32_t>();
    return reader.Take(length == kLong ? reader.Read<std::uint64_t>() : length);
}

bool ReadCommonEntry(TableBytes frames, const std::uint8_t* at, CommonEntry& entry)
{
    if (!frames.Contains(at))
        return false;
    TableReader outer({at, frames.end});
    TableReader reader(ReadEntry(outer));
    if (reader.Read<std::uint32_t>() != 0)
        return false;
    const auto version = reader.Read<std::uint8_t>();
    const auto* const augmentation = reinterpret_cast<const char*>(reader.At());
    const std::size_t length = strnlen(augmentation, reader.Left());
    reader.Take(length + 1);
    entry.codeAlignment = reader.ReadUleb();
    entry.dataAlignment = reader.ReadSleb();
    entry.returnColumn = version == 1 ? reader.Read<std::uint8_t>() : reader.ReadUleb();
    if ((version != 1 && version != 3) || reader.HasFailed())
        return false;
    if (length > 0 && augmentation[0] == 'z')
    {
        entry.hasAugmentation = true;
        TableReader data(reader.Take(reader.ReadUleb()));
        for (std::size_t index = 1; index < length && !data.HasFailed(); ++index)
            switch (augmentation[index])
            {
            case 'R':
                entry.pointerEncoding = data.Read<std::uint8_t>();
                break;
            case 'L':
                data.Read<std::uint8_t>();
                break;
            case 'P':
                data.ReadValue(data.Read<std::uint8_t>() & 0x0F);
                break;
            case 'S':
                entry.isSignalFrame = true;
                break;
            case 'B':
                break;
            default: // the rest doesn't matter; its size is known
                index = length;
            }
        if (data.HasFailed())
            return false;
    }
    else if (length > 0)
        return false;
    entry.instructions = reader.Take(reader.Left());
    return !reader.HasFailed();
}

// Executes the instructions of an entry.
class RuleProgram
{
public:
    // `begin` is the address of the function. `initial` is the state to which instructions may return registers.
    RuleProgram(
        const CommonEntry& common, const FrameRule::State& initial, FrameRule::State& state, std::uintptr_t begin)
        : _common(common),
          _initial(initial),
          _state(state),
          _location(begin)
    {
    }

    std::uintptr_t Location() const { return _location; }

    // Executes the instructions that apply to the instruction at `address`. Returns false if one is unknown.
    bool Run(TableBytes instructions, std::uintptr_t address)
    {
        TableReader reader(instructions);
        while (!reader.IsAtEnd())
        {
            const auto code = reader.Read<std::uint8_t>();
            const unsigned operand = code & 0x3F;
            switch (code & 0xC0)
            {
            case 0x40:
                if (!Advance(operand, address))
                    return true;
                break;
            case 0x80:
                Set(operand, How::AtOffset, Scaled(reader.ReadUleb()));
                break;
            case 0xC0:
                Restore(operand);
                break;
            default:
                bool isPast = false;
                if (!RunExtended(code, reader, address, isPast))
                    return false;
                if (isPast)
                    return true;
            }
            if (reader.HasFailed() || _hasFailed)
                return false;
        }
        return true;
    }

private:
    static constexpr unsigned kMostRemembered = 4; // compilers don't nest them

    // Multiplies without signed overflow, which damaged tables could cause.
    std::int64_t Scaled(std::uint64_t offset) const
    {
        return static_cast<std::int64_t>(offset * static_cast<std::uint64_t>(_common.dataAlignment));
    }

    // Returns false if the instructions that follow apply to later addresses.
    bool Advance(std::uint64_t delta, std::uintptr_t address)
    {
        _location += delta * _common.codeAlignment;
        return _location <= address;
    }

    // Registers that aren't tracked are ignored.
    void Set(std::uint64_t number, How how, std::int64_t value)
    {
        if (number >= kRegisterCount)
            return;
        _state.how[number] = how;
        _state.value[number] = value;
    }

    void Restore(std::uint64_t number)
    {
        if (number < kRegisterCount)
            Set(number, _initial.how[number], _initial.value[number]);
    }

    void SetCfa(std::uint64_t number, std::int64_t offset)
    {
        if (number >= kRegisterCount)
            _hasFailed = true;
        _state.cfaHow = How::Offset;
        _state.cfaRegister = static_cast<std::uint8_t>(number);
        _state.cfaOffset = offset;
    }

    // Skips an expression. Returns the address of its length field, which precedes it.
    static std::int64_t TakeExpression(TableReader& reader)
    {
        const auto* const expression = reader.At();
        reader.Take(reader.ReadUleb());
        return reinterpret_cast<std::int64_t>(expression);
    }

    bool RunExtended(std::uint8_t code, TableReader& reader, std::uintptr_t address, bool& isPast)
    {
        switch (code)
        {
        case 0x00: // nop
            return true;
        case 0x01: // set_loc
            _location = reader.ReadPointer(_common.pointerEncoding, 0);
            isPast = _location > address;
            return true;
        case 0x02: // advance_loc1
            isPast = !Advance(reader.Read<std::uint8_t>(), address);
            return true;
        case 0x03: // advance_loc2
            isPast = !Advance(reader.Read<std::uint16_t>(), address);
            return true;
        case 0x04: // advance_loc4
            isPast = !Advance(reader.Read<std::uint32_t>(), address);
            return true;
        case 0x0A: // remember_state
            if (_rememberedCount == kMostRemembered)
                return false;
            _remembered[_rememberedCount++] = _state;
            return true;
        case 0x0B: // restore_state
            if (_rememberedCount == 0)
                return false;
            _state = _remembered[--_rememberedCount];
            return true;
        case 0x0C: // def_cfa
        {
            const std::uint64_t number = reader.ReadUleb();
            SetCfa(number, static_cast<std::int64_t>(reader.ReadUleb()));
            return true;
        }
        case 0x0D: // def_cfa_register
            SetCfa(reader.ReadUleb(), _state.cfaOffset);
            return true;
        case 0x0E: // def_cfa_offset
            SetCfa(_state.cfaRegister, static_cast<std::int64_t>(reader.ReadUleb()));
            return true;
        case 0x0F: // def_cfa_expression
            _state.cfaHow = How::Expression;
            _state.cfaOffset = TakeExpression(reader);
            return true;
        case 0x12: // def_cfa_sf
        {
            const std::uint64_t number = reader.ReadUleb();
            SetCfa(number, Scaled(static_cast<std::uint64_t>(reader.ReadSleb())));
            return true;
        }
        case 0x13: // def_cfa_offset_sf
            SetCfa(_state.cfaRegister, Scaled(static_cast<std::uint64_t>(reader.ReadSleb())));
            return true;
        case 0x2D: // window_save, negate_ra_state: the signature of a return address is removed in any case
            return true;
        case 0x2E: // args_size
            reader.ReadUleb();
            return true;
        default:
            return RunRegisterRule(code, reader);
        }
    }

    bool RunRegisterRule(std::uint8_t code, TableReader& reader)
    {
        const std::uint64_t number = reader.ReadUleb();
        switch (code)
        {
        case 0x05: // offset_extended
            Set(number, How::AtOffset, Scaled(reader.ReadUleb()));
            return true;
        case 0x06: // restore_extended
            Restore(number);
            return true;
        case 0x07: // undefined
            Set(number, How::Undefined, 0);
            return true;
        case 0x08: // same_value
            Set(number, How::Same, 0);
            return true;
        case 0x09: // register
            Set(number, How::InRegister, static_cast<std::int64_t>(reader.ReadUleb()));
            return true;
        case 0x10: // expression
            Set(number, How::AtExpression, TakeExpression(reader));
            return true;
        case 0x11: // offset_extended_sf
            Set(number, How::AtOffset, Scaled(static_cast<std::uint64_t>(reader.ReadSleb())));
            return true;
        case 0x14: // val_offset
            Set(number, How::Offset, Scaled(reader.ReadUleb()));
            return true;
        case 0x15: // val_offset_sf
            Set(number, How::Offset, Scaled(static_cast<std::uint64_t>(reader.ReadSleb())));
            return true;
        case 0x16: // val_expression
            Set(number, How::Expression, TakeExpression(reader));
            return true;
        case 0x2F: // negative_offset_extended
            Set(number, How::AtOffset, Scaled(0 - reader.ReadUleb()));
            return true;
        default:
            return false;
        }
    }

    const CommonEntry& _common;
    const FrameRule::State& _initial;
    FrameRule::State& _state;
    FrameRule::State _remembered[kMostRemembered];
    unsigned _rememberedCount = 0;
    std::uintptr_t _location;
    bool _hasFailed = false;
};

// The state before the first instruction: all registers keep their values, and the frame address isn't known.
constexpr FrameRule::State NoRules()
{
    FrameRule::State state = {};
    state.cfaHow = How::Undefined;
    return state;
}

constexpr FrameRule::State kNoRules = NoRules();

} // namespace

struct RuleFinder::Function
{
    std::uintptr_t begin;
    TableBytes instructions;
};

RuleFinder::RuleFinder(const UnwindTable& table) : _index(table.index), _frames(table.frames)
{
    IndexHead head;
    if (!ReadIndexHead(_index, head))
        return;
    _firstFrame = head.frames;
    _count = head.count;
    _entries = head.entries;
}

bool RuleFinder::Find(std::uintptr_t address, FrameRule& rule)
{
    if (_count > 0)
        return RuleOfEntry(SearchIndex(address), address, rule);
    return _firstFrame != nullptr && _frames.Contains(_firstFrame) && ScanFrames(address, rule);
}

std::uintptr_t RuleFinder::BeginAt(std::uint64_t position) const
{
    std::int32_t offset;
    std::memcpy(&offset, _entries + position * 8, sizeof offset);
    return reinterpret_cast<std::uintptr_t>(_index.begin) + static_cast<std::uintptr_t>(std::intptr_t{offset});
}

// Returns the entry of the last function that begins at or before the address.
const std::uint8_t* RuleFinder::SearchIndex(std::uintptr_t address)
{
    constexpr std::uint64_t kNear = 32;
    std::uint64_t first = _position > kNear ? _position - kNear : 0;
    std::uint64_t last = std::min(_position + kNear, _count);
    if (address < BeginAt(first))
        first = 0;
    if (last < _count && address >= BeginAt(last))
        last = _count;
    while (last - first > 1)
    {
        const std::uint64_t middle = first + (last - first) / 2;
        (BeginAt(middle) <= address ? first : last) = middle;
    }
    _position = first;
    std::int32_t offset;
    std::memcpy(&offset, _entries + first * 8 + 4, sizeof offset);
    const auto base = reinterpret_cast<std::uintptr_t>(_index.begin);
    return reinterpret_cast<const std::uint8_t*>(base + static_cast<std::uintptr_t>(std::intptr_t{offset}));
}

// Searches all entries, for tables without a sorted index.
bool RuleFinder::ScanFrames(std::uintptr_t address, FrameRule& rule)
{
    for (TableReader reader({_firstFrame, _frames.end}); reader.Left() >= 8;)
    {
        const auto* const entry = reader.At();
        if (ReadEntry(reader).Size() == 0)
            return false;
        if (RuleOfEntry(entry, address, rule))
            return true;
    }
    return false;
}

// Computes the rule from an entry, if the entry is for the function that contains the address.
bool RuleFinder::RuleOfEntry(const std::uint8_t* at, std::uintptr_t address, FrameRule& rule)
{
    Function function;
    if (!ReadFunction(at, address, function))
        return false;
    rule.returnColumn = static_cast<std::uint8_t>(_common.returnColumn);
    rule.isSignalFrame = _common.isSignalFrame;
    rule.state = _initial;
    RuleProgram program(_common, _initial, rule.state, function.begin);
    return program.Run(function.instructions, address) && rule.state.cfaHow != How::Undefined;
}

// Reads an entry and its common entry. Returns false if the entry is for another function or damaged.
bool RuleFinder::ReadFunction(const std::uint8_t* at, std::uintptr_t address, Function& function)
{
    if (!_frames.Contains(at))
        return false;
    TableReader outer({at, _frames.end});
    TableReader reader(ReadEntry(outer));
    const auto* const place = reader.At();
    const auto distance = reader.Read<std::uint32_t>();
    if (distance == 0 || distance > static_cast<std::size_t>(place - _frames.begin) || !ReadCommon(place - distance))
        return false;
    function.begin = reader.ReadPointer(_common.pointerEncoding, 0);
    const std::uintptr_t size = reader.ReadValue(_common.pointerEncoding & 0x0F);
    if (_common.hasAugmentation)
        reader.Take(reader.ReadUleb());
    function.instructions = reader.Take(reader.Left());
    return !reader.HasFailed() && address >= function.begin && address - function.begin < size &&
           _common.returnColumn < kRegisterCount;
}

// The instructions of a common entry don't depend on an address, so their result is the same for all functions.
bool RuleFinder::ReadCommon(const std::uint8_t* at)
{
    if (at == _commonAt)
        return true;
    _commonAt = nullptr;
    _common = {};
    if (!ReadCommonEntry(_frames, at, _common))
        return false;
    _initial = kNoRules;
    RuleProgram program(_common, kNoRules, _initial, 0);
    if (!program.Run(_common.instructions, UINTPTR_MAX) || program.Location() != 0)
        return false;
    _commonAt = at;
    return true;
}

const std::uint8_t* FramesOf(TableBytes index)
{
    IndexHead head;
    return ReadIndexHead(index, head) ? head.frames : nullptr;
}

bool FindFrameRule(const UnwindTable& table, std::uintptr_t address, FrameRule& rule)
{
    return RuleFinder(table).Find(address, rule);
}

} // namespace qxplatform
