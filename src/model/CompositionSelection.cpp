// Selection and stacking order of a composition's components.

#include "model/Attribute.h"
#include "model/Composition.h"
#include "model/QuartzComponent.h"

#include <algorithm>

namespace model {

std::vector<QuartzComponent*> Composition::selectedComponents() const
{
    std::vector<QuartzComponent*> result;
    for (QuartzComponent* c : componentArray())
        if (c->selected()) result.push_back(c);
    return result;
}

QList<int> Composition::selectedComponentsIndexes() const
{
    QList<int> result;
    const auto all = componentArray();
    for (int i = 0; i < int(all.size()); ++i)
        if (all[std::size_t(i)]->selected()) result.append(i);
    return result;
}

QList<int> Composition::selectedComponentsIndexesSortedByZLevel() const
{
    // Rows of the top-first list; exact when z-levels are dense.
    const int count = int(componentArray().size());
    QList<int> result;
    for (const QuartzComponent* c : selectedComponents()) result.append(count - 1 - int(c->zLevel()));
    std::sort(result.begin(), result.end());
    return result;
}

QList<int> Composition::selectionIndexPaths() const
{
    QList<int> rows;
    const auto topFirst = componentsSortedByInverseZLevel();
    for (int i = 0; i < int(topFirst.size()); ++i)
        if (topFirst[std::size_t(i)]->selected()) rows.append(i);
    return rows;
}

void Composition::setSelectionIndexPaths(const QList<int>& rows)
{
    const auto topFirst = componentsSortedByInverseZLevel();
    std::vector<QuartzComponent*> chosen;
    for (int row : rows)
        if (row >= 0 && row < int(topFirst.size())) chosen.push_back(topFirst[std::size_t(row)]);
    for (QuartzComponent* c : topFirst) c->setSelected(std::find(chosen.begin(), chosen.end(), c) != chosen.end());
}

void Composition::clearSelection()
{
    for (QuartzComponent* c : componentArray()) c->setSelected(false);
}

void Composition::selectAllComponents()
{
    for (QuartzComponent* c : componentArray()) c->setSelected(true);
}

void Composition::selectionDidChange()
{
    // "selectedComponents" reaches its dependants (the index sets and
    // validSelection) through the declared dependencies.
    willChangeValueForKey(QStringLiteral("selectedComponents"));
    willChangeValueForKey(QStringLiteral("selectionIndexPaths"));
    didChangeValueForKey(QStringLiteral("selectedComponents"));
    didChangeValueForKey(QStringLiteral("selectionIndexPaths"));
}

void Composition::sizeToFitSelection()
{
    for (QuartzComponent* c : selectedComponents()) c->sizeToFit();
}

void Composition::showAllComponents()
{
    for (QuartzComponent* c : componentArray()) c->setVisibleInCompositionEditor(true);
}

void Composition::soloSelectedComponents()
{
    const auto all = componentArray();
    const bool soloed = !all.empty() && std::all_of(all.begin(), all.end(), [](const QuartzComponent* c) {
        return c->selected() == c->visibleInCompositionEditor();
    });
    for (QuartzComponent* c : all) c->setVisibleInCompositionEditor(soloed ? true : c->selected());
}

std::vector<Attribute*> Composition::attributesWithSelectedKeyframes() const
{
    std::vector<Attribute*> result;
    for (const QuartzComponent* c : componentArray()) {
        const auto more = c->attributesWithSelectedKeyframes();
        result.insert(result.end(), more.begin(), more.end());
    }
    return result;
}

void Composition::deselectAllKeyFrames()
{
    for (QuartzComponent* c : componentArray()) c->deselectAllKeyFrames();
}

void Composition::willReorder()
{
    willChangeValueForKey(QStringLiteral("componentsSortedByZLevel"));
    willChangeValueForKey(QStringLiteral("componentsSortedByInverseZLevel"));
}

void Composition::didReorder()
{
    didChangeValueForKey(QStringLiteral("componentsSortedByInverseZLevel"));
    didChangeValueForKey(QStringLiteral("componentsSortedByZLevel"));
}

void Composition::adjustZLevels(const std::vector<QuartzComponent*>& ordered)
{
    willReorder();
    for (std::size_t i = 0; i < ordered.size(); ++i) ordered[i]->setZLevel(quint32(i));
    didReorder();
}

void Composition::moveComponentsByLevel(const std::vector<QuartzComponent*>& components, int delta)
{
    const std::vector<QuartzComponent*> before = componentsSortedByZLevel();
    if (before.empty()) return;
    std::vector<QuartzComponent*> after = before;
    const int last = int(before.size()) - 1;
    willReorder();
    for (QuartzComponent* c : components) {
        // The index comes from the order before the whole move.
        const auto found = std::find(before.begin(), before.end(), c);
        if (found == before.end()) continue;
        const int index = std::clamp(int(found - before.begin()) + delta, 0, last);
        c->setZLevel(quint32(index));
        after.erase(std::find(after.begin(), after.end(), c));
        after.insert(after.begin() + index, c);
    }
    didReorder();
    adjustZLevels(after);
}

void Composition::sendSelectionTo(bool front)
{
    const std::vector<QuartzComponent*> selected = selectedComponents();
    std::vector<QuartzComponent*> order = componentsSortedByZLevel();
    order.erase(std::remove_if(order.begin(), order.end(), [](const QuartzComponent* c) { return c->selected(); }), order.end());
    order.insert(front ? order.end() : order.begin(), selected.begin(), selected.end());
    adjustZLevels(order);
}

bool Composition::swapSelected()
{
    const std::vector<QuartzComponent*> selected = selectedComponents();
    if (selected.size() != 2) return false;
    std::vector<QuartzComponent*> order = componentsSortedByZLevel();
    auto a = std::find(order.begin(), order.end(), selected[0]);
    auto b = std::find(order.begin(), order.end(), selected[1]);
    std::iter_swap(a, b);
    adjustZLevels(order);
    return true;
}

}  // namespace model
