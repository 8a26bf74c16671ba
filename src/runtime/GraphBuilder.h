#pragma once
// Turns the node dictionaries of a composition file into running patches:
// instantiates classes (inert stand-ins for unknown ones), expands virtual
// patches, publishes ports, wires connections, applies stored port values
// and breaks connection cycles. Every problem is reported, none is fatal.

#include "runtime/MacroPatch.h"

#include <QStringList>

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace runtime {

class CompositionResources;

class GraphBuilder {
public:
    // Caps that keep hostile files (deeply nested or exponentially
    // expanding virtual patches) from exhausting memory or the stack.
    static constexpr int kMaxNodes = 100000;
    static constexpr int kMaxDepth = 48;

    // `document` is the whole file (for "virtualPatches"); problems may be null.
    GraphBuilder(const plist::Value& document, const CompositionResources& resources, QStringList* problems);

    // The root patch with the file's input parameters applied. Never null.
    std::unique_ptr<MacroPatch> buildRoot();
    // One node dictionary ({class, key, identifier?, state?}) with its contents.
    std::unique_ptr<Patch> buildNode(const plist::Value& node, const QString& parentPath);

private:
    std::unique_ptr<Patch> buildNodeAt(const plist::Value& node, const QString& parentPath, int depth);
    std::unique_ptr<Patch> buildVirtual(const PatchSetup& setup, const QString& where, int depth);
    void buildContents(MacroPatch& macro, const plist::Value& state, const QString& where, int depth);
    void publishPorts(MacroPatch& macro, const plist::Value& state, const QString& where);
    void connectChildren(MacroPatch& macro, const plist::Value& state, const QString& where);
    void breakCycles(MacroPatch& macro, const QString& where);
    void report(const QString& where, const QString& message);
    // A string entry of a dictionary in the document, converted once.
    QString text(const plist::Value& dict, const char* key);
    const plist::Value* virtualDefinition(const std::string& name) const;

    const plist::Value& document_;
    const CompositionResources& resources_;
    QStringList* problems_;
    std::vector<const plist::Value*> virtualScopes_;  // "virtualPatches" dictionaries, innermost last
    std::vector<std::string> virtualStack_;           // virtual patches being expanded
    // Views into the document's strings, which outlive the builder.
    std::unordered_map<std::string_view, QString> strings_;
    int nodes_ = 0;
    bool reportedNodeLimit_ = false;
};

// Applies "ivarInputPortStates", "customInputPortStates" and
// "systemInputPortStates" to the patch's inputs.
void applyStoredPortStates(Patch& patch, const plist::Value& state);
// Applies a composition's "inputParameters" to a macro's published inputs.
void applyInputParameters(MacroPatch& macro, const plist::Value& parameters);

}  // namespace runtime
