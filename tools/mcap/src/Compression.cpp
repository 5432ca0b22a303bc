// SPDX-License-Identifier: Apache-2.0
#include "Compression.hpp"

#include <lz4frame.h>
#include <new>
#include <stdexcept>
#include <zstd.h>

namespace ovra::plex::mcap
{

namespace
{

constexpr int zstdLevel = 1; // the fastest: a recording has to keep up

bool decompressLz4(std::span<const std::uint8_t> bytes, std::vector<std::uint8_t>& uncompressed)
{
    LZ4F_dctx* made = nullptr;
    if (LZ4F_isError(LZ4F_createDecompressionContext(&made, LZ4F_VERSION)) != 0U) {
        throw std::bad_alloc();
    }
    const std::unique_ptr<LZ4F_dctx, decltype(&LZ4F_freeDecompressionContext)> context(
        made, LZ4F_freeDecompressionContext);
    std::size_t read = 0;
    std::size_t written = 0;
    std::size_t hint = 1;
    while (hint != 0 && read < bytes.size()) {
        std::size_t source = bytes.size() - read;
        std::size_t target = uncompressed.size() - written;
        hint = LZ4F_decompress(context.get(), uncompressed.data() + written, &target, bytes.data() + read,
                               &source, nullptr);
        read += source;
        written += target;
        if (LZ4F_isError(hint) != 0U || (source == 0 && target == 0)) {
            return false;
        }
    }
    return hint == 0 && read == bytes.size() && written == uncompressed.size();
}

} // namespace

std::string_view nameOf(Compression compression)
{
    switch (compression) {
    case Compression::Lz4:
        return "lz4";
    case Compression::Zstd:
        return "zstd";
    default:
        return "";
    }
}

std::optional<Compression> compressionOf(std::string_view name)
{
    for (const auto compression : {Compression::None, Compression::Lz4, Compression::Zstd}) {
        if (name == nameOf(compression)) {
            return compression;
        }
    }
    return std::nullopt;
}

struct Compressor::Context {
    std::unique_ptr<ZSTD_CCtx, decltype(&ZSTD_freeCCtx)> zstd{ZSTD_createCCtx(), ZSTD_freeCCtx};
};

Compressor::Compressor(Compression compression)
    : compression_(compression)
    , context_(std::make_unique<Context>())
{
}

Compressor::~Compressor() = default;

std::span<const std::uint8_t> Compressor::compress(std::span<const std::uint8_t> bytes)
{
    if (compression_ == Compression::None) {
        return bytes;
    }
    const bool isZstd = compression_ == Compression::Zstd;
    compressed_.resize(isZstd ? ZSTD_compressBound(bytes.size())
                              : LZ4F_compressFrameBound(bytes.size(), nullptr));
    const auto size = isZstd ? ZSTD_compressCCtx(context_->zstd.get(), compressed_.data(), compressed_.size(),
                                                 bytes.data(), bytes.size(), zstdLevel)
                             : LZ4F_compressFrame(compressed_.data(), compressed_.size(), bytes.data(),
                                                  bytes.size(), nullptr);
    if (isZstd ? ZSTD_isError(size) != 0U : LZ4F_isError(size) != 0U) {
        throw std::runtime_error("a chunk can not be compressed");
    }
    return std::span(compressed_).first(size);
}

bool decompress(Compression compression, std::span<const std::uint8_t> bytes, std::uint64_t size,
                std::vector<std::uint8_t>& uncompressed)
{
    if (compression == Compression::None) {
        uncompressed.assign(bytes.begin(), bytes.end());
        return bytes.size() == size;
    }
    uncompressed.resize(size);
    if (compression == Compression::Lz4) {
        return decompressLz4(bytes, uncompressed);
    }
    const auto written =
        ZSTD_decompress(uncompressed.data(), uncompressed.size(), bytes.data(), bytes.size());
    return ZSTD_isError(written) == 0U && written == size;
}

} // namespace ovra::plex::mcap
