#include "plist/LegacyArchiveClasses.h"

#include <array>
#include <map>

namespace plist::legacy::detail {

namespace {

constexpr std::array kKnownClasses = {
    KnownClass{"NSObject", "", ObjectKind::Nil, false, 0},
    KnownClass{"NSString", "NSObject", ObjectKind::String, false, 1},
    KnownClass{"NSMutableString", "NSString", ObjectKind::String, true, 1},
    KnownClass{"NSArray", "NSObject", ObjectKind::Array, false, 0},
    KnownClass{"NSMutableArray", "NSArray", ObjectKind::Array, true, 0},
    KnownClass{"NSDictionary", "NSObject", ObjectKind::Dictionary, false, 0},
    KnownClass{"NSMutableDictionary", "NSDictionary", ObjectKind::Dictionary, true, 0},
    KnownClass{"NSValue", "NSObject", ObjectKind::Value, false, 0},
    KnownClass{"NSNumber", "NSValue", ObjectKind::Number, false, 0},
    KnownClass{"NSColor", "NSObject", ObjectKind::Color, false, 0},
    KnownClass{"NSData", "NSObject", ObjectKind::Data, false, 0},
    KnownClass{"NSMutableData", "NSData", ObjectKind::Data, true, 0},
    // Editor template images: kept as their field groups, never interpreted.
    KnownClass{"NSImage", "NSObject", ObjectKind::Opaque, false, 0},
    KnownClass{"NSImageRep", "NSObject", ObjectKind::Opaque, false, 0},
    KnownClass{"NSBitmapImageRep", "NSImageRep", ObjectKind::Opaque, false, 0},
    KnownClass{"NSCachedImageRep", "NSImageRep", ObjectKind::Opaque, false, 0},
    KnownClass{"NSCustomImageRep", "NSImageRep", ObjectKind::Opaque, false, 0},
    KnownClass{"NSPDFImageRep", "NSImageRep", ObjectKind::Opaque, false, 0},
    KnownClass{"NSEPSImageRep", "NSImageRep", ObjectKind::Opaque, false, 0},
    KnownClass{"NSPICTImageRep", "NSImageRep", ObjectKind::Opaque, false, 0},
};

std::map<std::string_view, ClassChain> buildStandardChains()
{
    std::map<std::string_view, ClassChain> chains;
    for (const KnownClass& known : kKnownClasses) {
        auto chain = std::make_shared<std::vector<ArchivedClass>>();
        for (const KnownClass* c = &known; c; c = c->superclass.empty() ? nullptr : findKnownClass(c->superclass))
            chain->push_back({std::string(c->name), c->version});
        chains.emplace(known.name, std::move(chain));
    }
    return chains;
}

}  // namespace

const KnownClass* findKnownClass(std::string_view name)
{
    for (const KnownClass& known : kKnownClasses)
        if (known.name == name) return &known;
    return nullptr;
}

ClassChain standardChain(std::string_view name)
{
    static const std::map<std::string_view, ClassChain> chains = buildStandardChains();
    const auto it = chains.find(name);
    return it == chains.end() ? nullptr : it->second;
}

}  // namespace plist::legacy::detail
