#include "tests/support/failing_memory.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "corvane/platform/types.h"

namespace {

thread_local long long left = -1; // allocations before the one that fails; -1 for none, -2 when it did

void* CountedMalloc(std::size_t size)
{
    const bool fails = left == 0;
    left -= left > 0 ? 1 : (fails ? 2 : 0);
    return fails ? nullptr : std::malloc(size);
}

template <class Type>
Type* At(HMODULE module, std::uint64_t offset)
{
    return reinterpret_cast<Type*>(reinterpret_cast<unsigned char*>(module) + offset);
}

// The DLL has an operator new of its own, which a program cannot replace; but it finds malloc through its table of
// imports. Null when that has no such function.
void** FindImport(HMODULE module, const char* name)
{
    const auto* const headers = At<IMAGE_NT_HEADERS>(module, At<IMAGE_DOS_HEADER>(module, 0)->e_lfanew);
    const DWORD table = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (const auto* library = At<IMAGE_IMPORT_DESCRIPTOR>(module, table); library->Name != 0; ++library) {
        auto* address = At<void*>(module, library->FirstThunk);
        const auto* entry = At<IMAGE_THUNK_DATA>(module, library->OriginalFirstThunk);
        for (; entry->u1.AddressOfData != 0; ++entry, ++address) {
            if (std::strcmp(At<IMAGE_IMPORT_BY_NAME>(module, entry->u1.AddressOfData)->Name, name) == 0) {
                return address;
            }
        }
    }
    return nullptr;
}

void CountAllocations()
{
    void** const address = FindImport(GetModuleHandleA("corvane.dll"), "malloc");
    DWORD before = 0;
    VirtualProtect(address, sizeof(*address), PAGE_READWRITE, &before);
    *address = reinterpret_cast<void*>(CountedMalloc);
    VirtualProtect(address, sizeof(*address), before, &before);
}

} // namespace

namespace corvane::test {

FailingMemory::FailingMemory(long long allowed)
{
    static const bool isCounted = (CountAllocations(), true);
    left = isCounted ? allowed : -1;
}

FailingMemory::~FailingMemory()
{
    left = -1;
}

bool FailingMemory::HasFailed() const
{
    return left == -2;
}

} // namespace corvane::test
