#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <dlfcn.h>

namespace {

TEST(VectorTargetsTest, AreThoseOfTheLibraryItself) {
    void* const library = ::dlopen("libhwy.so.1", RTLD_NOW | RTLD_LOCAL);
    if (!library)
        GTEST_SKIP() << "the library is not installed";
    using Function = std::int64_t();
    auto* const theirs = reinterpret_cast<Function*>(::dlsym(library, "_ZN3hwy16SupportedTargetsEv"));
    ASSERT_NE(theirs, nullptr);
    ASSERT_NE(theirs, &hwy::SupportedTargets);
    // What is slower than the slowest that is compiled is of no interest.
    const std::int64_t targets = hwy::SupportedTargets();
    EXPECT_EQ(targets, theirs() & (HWY_TARGETS | targets));
}

} // namespace
