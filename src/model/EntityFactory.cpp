#include "model/EntityFactory.h"

#include "model/Attribute.h"
#include "model/Composition.h"
#include "model/QuartzComponent.h"
#include "model/Ruler.h"
#include "model/StopFrame.h"

namespace model {

std::unique_ptr<ManagedObject> makeEntityObject(const QString& entityName, ObjectStore* store)
{
    if (entityName == QLatin1String("Composition")) return std::make_unique<Composition>(store);
    if (entityName == QLatin1String("Component")) return std::make_unique<QuartzComponent>(store);
    if (entityName == QLatin1String("Attribute")) return std::make_unique<Attribute>(store);
    if (entityName == QLatin1String("StopFrame")) return std::make_unique<StopFrame>(store);
    if (entityName == QLatin1String("Ruler")) return std::make_unique<Ruler>(store);
    return nullptr;
}

}  // namespace model
