// Which kinds of vectors this machine has, for Highway, whose headers alone are used: its shared library finds out how
// fine the machine's timer is whenever it is loaded, for benchmarks that nobody runs, which cost every program here seven
// milliseconds of its start. What is asked of that library is the three functions below.

#include <hwy/targets.h>

#include <cstdint>
#include <cstdlib>
#include <initializer_list>

#if HWY_ARCH_X86
#include <cpuid.h>
#endif

namespace hwy {
namespace {

#if HWY_ARCH_X86

struct Registers {
    unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
};

Registers cpuid(unsigned leaf) {
    Registers registers;
    __get_cpuid_count(leaf, 0, &registers.eax, &registers.ebx, &registers.ecx, &registers.edx);
    return registers;
}

constexpr std::uint32_t bits(std::initializer_list<int> numbers) {
    std::uint32_t result = 0;
    for (const int number : numbers)
        result |= std::uint32_t{1} << number;
    return result;
}

constexpr bool has(std::uint32_t bitsOfRegister, std::uint32_t needed) {
    return (bitsOfRegister & needed) == needed;
}

/// Which registers the system saves when it switches threads (XCR0).
std::uint32_t savedRegisters() {
    std::uint32_t low = 0, high = 0;
    asm volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return low;
}

// The bits are those of the processors' manuals, the sets those that Highway compiles each target with.
std::int64_t detectedTargets() {
    const Registers first = cpuid(1);
    const Registers seventh = cpuid(7);
    const Registers extended = cpuid(0x80000001);
    std::int64_t targets = HWY_EMU128 | HWY_SCALAR;
    // SSE3, SSSE3
    if (!has(first.ecx, bits({0, 9})))
        return targets;
    targets |= HWY_SSSE3;
    // PCLMULQDQ, SSE4.1, SSE4.2, AES
    if (!has(first.ecx, bits({1, 19, 20, 25})))
        return targets;
    targets |= HWY_SSE4;
    // FMA, OSXSAVE, AVX, F16C; BMI1, AVX2, BMI2; LZCNT; and the system saves XMM and YMM
    if (!has(first.ecx, bits({12, 27, 28, 29})) || !has(seventh.ebx, bits({3, 5, 8})) ||
        !has(extended.ecx, bits({5})) || !has(savedRegisters(), bits({1, 2})))
        return targets;
    targets |= HWY_AVX2;
    // AVX-512 F, DQ, BW, VL; and the system saves its masks and both halves of ZMM
    if (!has(seventh.ebx, bits({16, 17, 30, 31})) || !has(savedRegisters(), bits({5, 6, 7})))
        return targets;
    targets |= HWY_AVX3;
    // VBMI, VBMI2, GFNI, VAES, VPCLMULQDQ, VNNI, BITALG, VPOPCNTDQ
    if (has(seventh.ecx, bits({1, 6, 8, 9, 10, 11, 12, 14})))
        targets |= HWY_AVX3_DL;
    return targets;
}

#else

// What the compiler may use everywhere.
std::int64_t detectedTargets() {
    return HWY_STATIC_TARGET;
}

#endif

} // namespace

std::int64_t SupportedTargets() {
    static const std::int64_t targets = detectedTargets();
    return targets;
}

/// For what cannot happen in these headers; unoptimised builds ask for it all the same.
void Abort(const char*, int, const char*, ...) {
    std::abort();
}

ChosenTarget& GetChosenTarget() {
    static ChosenTarget chosen;
    return chosen;
}

} // namespace hwy
