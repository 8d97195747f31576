#pragma once

// Picks the variant of a hot loop that suits the processor: the one built for AVX2 when the
// processor has it, else the baseline. Both variants compile the same code, so they add the
// same products in the same order and give the same samples.
template <typename Function> Function ChooseForProcessor(Function avx2, Function baseline) {
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx2") ? avx2 : baseline;
}
