#include "prof/packed_form.h"

#include "core/debug_line.h"
#include "files/deflate_stream.h"
#include "files/zlib_parameters.h"
#include "prof/job.h"
#include "prof/output.h"

#include <algorithm>
#include <limits>
#include <new>

namespace qx
{

namespace
{

constexpr int kPackedMode = 5;
constexpr uInt kBlock = 0x10000;

class clsDeflater
{
public:
    explicit clsDeflater(clsProfOutput& target) : _target(target)
    {
        constexpr DeflateMode kMode = DeflateModeOf(kPackedMode);
        if (deflateInit2(&_stream, kMode.level, Z_DEFLATED, kRawDeflateWindowBits, kMode.memoryLevel, kMode.strategy) !=
            Z_OK)
            throw std::bad_alloc();
    }
    clsDeflater(const clsDeflater&) = delete;
    clsDeflater& operator=(const clsDeflater&) = delete;
    ~clsDeflater() { deflateEnd(&_stream); }

    // Can't fail, because memory for the output is always available here.
    void Add(const std::byte* bytes, uInt count, int flush)
    {
        _stream.next_in = reinterpret_cast<Bytef*>(const_cast<std::byte*>(bytes));
        _stream.avail_in = count;
        do
        {
            _stream.next_out = reinterpret_cast<Bytef*>(_target.ReserveBytes(kBlock));
            _stream.avail_out = kBlock;
            deflate(&_stream, flush);
            _target.SetUsed(_stream.next_out);
        } while (_stream.avail_out == 0);
    }

private:
    clsProfOutput& _target;
    z_stream _stream = {};
};

} // namespace

// The packed data don't depend on how the image is divided into pieces.
void PackImage(const clsProfOutput& image, clsProfOutput& packed)
{
    packed.SetUsed(
        std::copy(std::begin(kPackedMagic), std::end(kPackedMagic), packed.ReserveBytes(sizeof kPackedMagic)));
    clsDeflater deflater(packed);
    image.ForEachPiece(
        [&](const std::byte* piece, std::size_t size)
        {
            for (std::size_t part; size != 0; piece += part, size -= part)
            {
                part = std::min<std::size_t>(size, std::numeric_limits<uInt>::max());
                deflater.Add(piece, static_cast<uInt>(part), Z_NO_FLUSH);
            }
            return true;
        });
    deflater.Add(nullptr, 0, Z_FINISH);
}

std::uint32_t UnpackImage(clsFile& source, clsFile& target, std::int64_t largest)
{
    DeflateEnd end;
    const int code = InflateStream(target, source, -1, largest, &end);
    if (code == Z_BUF_ERROR)
        return kSourceTooLarge;
    if (code != 0 || end == DeflateEnd::Missing)
    {
        DebugLine(L"WRN: a packed profile is damaged or cut off (%d)", code);
        return kSourceDamaged;
    }
    return end == DeflateEnd::BeforeRest ? std::uint32_t{kSourceIgnored} : 0;
}

} // namespace qx
