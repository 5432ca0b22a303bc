// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace plex::fuzz
{

/// What a target does with one input. It ends the process where something is wrong, and throws nothing.
void run(std::span<const std::uint8_t> input);

} // namespace plex::fuzz

/// What libFuzzer calls with each of its inputs, and the replay with each file of the corpus.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
