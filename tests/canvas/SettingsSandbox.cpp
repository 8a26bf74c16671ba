// Every canvas test process keeps its preferences (and the window layout
// the document windows remember) to itself.
#include "../support/SettingsSandbox.h"

static auto* const sandbox = ::testing::AddGlobalTestEnvironment(new SettingsSandbox);
