// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace plex::test
{

/// How many blocks of the process's operator new are alive. The program's own operator new counts them.
long liveAllocations();

/// While it lives, operator new(std::nothrow) finds no memory; the throwing form does.
class WithoutNothrowMemory
{
public:
    WithoutNothrowMemory();
    WithoutNothrowMemory(const WithoutNothrowMemory&) = delete;
    WithoutNothrowMemory& operator=(const WithoutNothrowMemory&) = delete;
    ~WithoutNothrowMemory();
};

} // namespace plex::test
