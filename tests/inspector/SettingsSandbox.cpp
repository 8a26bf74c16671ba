// Every inspector test process keeps its preferences to itself.
#include "../support/SettingsSandbox.h"

static auto* const sandbox = ::testing::AddGlobalTestEnvironment(new SettingsSandbox);
