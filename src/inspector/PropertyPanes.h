#pragma once
// The panes of the Properties tab besides the attributes: the title, the
// geometry (position, size with its constrain-proportions switch, rotation,
// margins), the appearance (opacity, visible in the editor) and the timing
// (start, end and duration as timecode) of the selected components.

#include "inspector/VLInspectorViewContoller.h"

class QCheckBox;

namespace inspector {

class VLInspectorTitleController : public VLInspectorViewContoller {
    Q_OBJECT
public:
    explicit VLInspectorTitleController(VLInspectorController* inspectorController);
    void rebuild() override;
};

class VLInspectorTransformController : public VLInspectorViewContoller {
    Q_OBJECT
public:
    explicit VLInspectorTransformController(VLInspectorController* inspectorController);
    void rebuild() override;
};

class VLInspectorAppearanceController : public VLInspectorViewContoller {
    Q_OBJECT
public:
    explicit VLInspectorAppearanceController(VLInspectorController* inspectorController);
    void rebuild() override;
};

class VLInspectorTimingController : public VLInspectorViewContoller {
    Q_OBJECT
public:
    explicit VLInspectorTimingController(VLInspectorController* inspectorController);
    void rebuild() override;
};

}  // namespace inspector
