// The OpenGL test binary: every renderer made in it asks for OpenGL, and the
// whole binary is skipped, saying why, where no context can be made (ctest
// runs it under xvfb-run with Mesa's llvmpipe when xvfb-run is installed).

#include "runtime/BackendFactory.h"
#include "runtime/gl/GlBackend.h"

#include <gtest/gtest.h>

namespace {

class GlEnvironment : public ::testing::Environment {
public:
    void SetUp() override
    {
        QString why;
        if (!runtime::GlBackend::make(&why)) GTEST_SKIP() << "no OpenGL context: " << why.toStdString();
        runtime::setDefaultBackendPreference(runtime::BackendPreference::OpenGL);
    }
};

const auto* const registered = ::testing::AddGlobalTestEnvironment(new GlEnvironment);

}  // namespace
