#include "support/Faults.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <new>

namespace NSTQ::Tests::Faults {

namespace {

constinit thread_local std::array<Scope*, callCount> inForce{};
constinit std::atomic<std::ptrdiff_t> liveAllocations{0};
constinit std::atomic<std::ptrdiff_t> untilFailure{0}; ///< 1: the next allocation fails; below it none does

Scope*& InForce(Call call) {
    return inForce[static_cast<std::size_t>(call)];
}

} // namespace

Scope* FindStriking(Call call) {
    Scope* const fault = InForce(call);
    return fault != nullptr && fault->Strike() ? fault : nullptr;
}

Scope::Scope(Call call, std::size_t nth, int error, Times times)
    : m_call(call), m_nth(nth), m_limit(0), m_error(error), m_times(times), m_previous(InForce(call)) {
    InForce(call) = this;
}

Scope::Scope(Call call, std::size_t nth, Short limit, Times times) : Scope(call, nth, 0, times) {
    m_limit = std::max<std::size_t>(limit.bytes, 1);
}

Scope::~Scope() {
    InForce(m_call) = m_previous;
}

bool Scope::Strike() {
    ++m_calls;
    return m_calls == m_nth || (m_times == Times::Always && m_calls > m_nth);
}

AllocationOfAnyThread::AllocationOfAnyThread(std::ptrdiff_t nth) {
    untilFailure = nth;
}

AllocationOfAnyThread::~AllocationOfAnyThread() {
    untilFailure = 0;
}

bool AllocationOfAnyThread::Fired() const {
    return untilFailure < 1;
}

std::ptrdiff_t LiveAllocations() {
    return liveAllocations;
}

} // namespace NSTQ::Tests::Faults

using namespace NSTQ::Tests::Faults;
namespace {

void* Allocate(std::size_t size) noexcept {
    const bool fails = FindStriking(Call::Allocate) != nullptr || (untilFailure > 0 && untilFailure-- == 1);
    void* const block = fails ? nullptr : std::malloc(std::max<std::size_t>(size, 1));
    liveAllocations += block != nullptr ? 1 : 0;
    return block;
}

void Free(void* block) noexcept {
    if (block != nullptr)
        --liveAllocations;
    std::free(block);
}

} // namespace

// No type of the library needs more alignment than malloc guarantees.

void* operator new(std::size_t size) {
    void* const block = Allocate(size);
    return block != nullptr ? block : throw std::bad_alloc();
}
void* operator new[](std::size_t size) {
    return operator new(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size);
}
void operator delete(void* block) noexcept {
    Free(block);
}
void operator delete[](void* block) noexcept {
    Free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    Free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    Free(block);
}
