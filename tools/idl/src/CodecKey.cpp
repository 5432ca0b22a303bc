// SPDX-License-Identifier: Apache-2.0
#include "CodecEncoder.hpp"
#include "Md5.hpp"

#include <algorithm>

namespace ovra::plex::idl
{

namespace
{

/// A hash holds a key of so many bytes as it is.
constexpr std::uint64_t HashSize = 16;

/// How many bytes keys of a type take at most. Counts on only while they fit into a hash.
class KeyMeter
{
public:
    explicit KeyMeter(XcdrVersion version) : version_(version) {}

    bool fits(const Type& type)
    {
        add(type);
        return size_ <= HashSize;
    }

private:
    bool isFull() const { return size_ > HashSize; }

    void add(const Type& declared);
    void add(const StructType& type);
    void add(const UnionType& type);
    void addElements(const Type& element, std::uint64_t count);
    void addNumber(std::uint64_t width);
    void addLength();
    void addLongest();

    XcdrVersion version_;
    MemberLists members_;
    std::size_t depth_ = 0;
    std::uint64_t size_ = 0;
};

void KeyMeter::addNumber(std::uint64_t width)
{
    const std::uint64_t alignment = std::min<std::uint64_t>(width, version_ == XcdrVersion::Xcdr1 ? 8 : 4);
    size_ = (size_ + alignment - 1) / alignment * alignment + width;
}

void KeyMeter::addLength()
{
    addNumber(4);
}

void KeyMeter::addLongest()
{
    size_ = HashSize + 1;
}

void KeyMeter::addElements(const Type& element, std::uint64_t count)
{
    if (version_ == XcdrVersion::Xcdr2 && delimitsListOf(element, {})) {
        addLength();
    }
    for (std::uint64_t i = 0; i < count && !isFull(); ++i) {
        const std::uint64_t before = size_;
        add(element);
        if (size_ == before) {
            return; // they take no bytes
        }
    }
}

void KeyMeter::add(const StructType& type)
{
    for (const Member* const member : members_.keysOf(type)) {
        if (member->optional) {
            addLongest(); // it has a header besides
            return;
        }
        add(*member->type);
    }
}

void KeyMeter::add(const UnionType& type)
{
    add(*type.discriminator);
    if (type.discriminatorIsKey) {
        return;
    }
    const std::uint64_t before = size_;
    std::uint64_t longest = before;
    for (const UnionCase& one : type.cases) {
        size_ = before;
        add(*one.type);
        longest = std::max(longest, size_);
    }
    size_ = longest;
}

void KeyMeter::add(const Type& declared)
{
    const Type& type = resolved(declared);
    if (isFull()) {
        return;
    }
    if (++depth_ > MaximumNesting) { // it contains itself
        addLongest();
        return;
    }
    if (const auto* const structure = as<StructType>(type)) {
        add(*structure);
    } else if (const auto* const choice = as<UnionType>(type)) {
        add(*choice);
    } else if (const auto* const array = as<ArrayType>(type)) {
        const ArrayShape shape(*array);
        addElements(*shape.element, shape.count);
    } else if (const auto* const sequence = as<SequenceType>(type)) {
        addLength();
        addElements(*sequence->element, sequence->bound == 0 ? HashSize + 1 : sequence->bound);
    } else if (const auto* const string = as<StringType>(type)) {
        addLength();
        size_ += string->bound == 0 ? HashSize : string->bound + 1;
    } else {
        addNumber(widthOf(type));
    }
    --depth_;
}

bool hasKey(const Type& type)
{
    if (const auto* const structure = as<StructType>(type)) {
        return structure->hasKey;
    }
    const auto* const choice = as<UnionType>(type);
    return choice != nullptr && choice->discriminatorIsKey;
}

std::array<std::uint8_t, HashSize> hashOf(const std::vector<std::uint8_t>& key)
{
    return md5({reinterpret_cast<const char*>(key.data()), key.size()});
}

} // namespace

std::optional<std::array<std::uint8_t, 16>> keyHash(const Type& type, const Datum& value, XcdrVersion version)
{
    if (!hasKey(resolved(type))) {
        return std::nullopt;
    }
    Encoder encoder({version, std::endian::big}, {}, Encoder::Part::Key, 0);
    encoder.write(type, value);
    const std::vector<std::uint8_t> key = encoder.take();
    if (!KeyMeter(version).fits(type)) {
        return hashOf(key);
    }
    std::array<std::uint8_t, HashSize> hash{};
    std::ranges::copy(key, hash.begin());
    return hash;
}

} // namespace ovra::plex::idl
