#pragma once

#include <gsf/gsf.h>

#include <memory>

namespace kelvo::importers {

struct UnreferenceByGLib {
    template <typename Object>
    void operator()(Object* object) const {
        g_object_unref(object);
    }
};

template <typename Object>
using HeldByGLib = std::unique_ptr<Object, UnreferenceByGLib>;

/// To be called before anything else of libgsf. It writes to the standard error what it finds wrong in each file, which is
/// stopped here.
inline void prepareGsf() {
    static const bool isReady = [] {
        gsf_init();
        for (const char* const domain :
             {static_cast<const char*>(nullptr), "libgsf", "libgsf:zip", "libgsf:msole"})
            g_log_set_handler(
                domain, static_cast<GLogLevelFlags>(G_LOG_LEVEL_MASK & ~G_LOG_LEVEL_ERROR),
                [](const char*, GLogLevelFlags, const char*, void*) {}, nullptr);
        return true;
    }();
    static_cast<void>(isReady);
}

} // namespace kelvo::importers
