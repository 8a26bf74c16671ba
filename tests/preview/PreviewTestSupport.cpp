// Each run of the preview tests keeps its settings and its temporary
// folder to itself: the preview export's fixed name there
// ("VelloranPreview.qtz") must not meet another test program's.
#include "../support/SettingsSandbox.h"

#include <QFile>
#include <QTemporaryDir>

namespace {

class PrivateTemporaryFolder : public ::testing::Environment {
public:
    void SetUp() override
    {
        if (folder_.isValid()) qputenv("TMPDIR", QFile::encodeName(folder_.path()));
    }

private:
    QTemporaryDir folder_;
};

}  // namespace

static auto* const sandbox = ::testing::AddGlobalTestEnvironment(new SettingsSandbox);
static auto* const temporary = ::testing::AddGlobalTestEnvironment(new PrivateTemporaryFolder);
