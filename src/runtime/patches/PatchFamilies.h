#pragma once
// One registration function per patch family; each lives with its family.

#include "runtime/PatchRegistry.h"

namespace runtime {

void registerMacroPatches(PatchRegistry& registry);      // QCPatch, Render In Image, Iterator, Camera
void registerRenderingPatches(PatchRegistry& registry);  // Clear, Sprite, Billboard, Gradient, Line
void registerValuePatches(PatchRegistry& registry);      // Splitter, Multiplexer, Demultiplexer, Sample & Hold
void registerMathPatches(PatchRegistry& registry);       // Math, Expression, Round, Range, Random, ...
void registerLogicPatches(PatchRegistry& registry);      // Logic, Conditional, Counter, Pulse
void registerColorPatches(PatchRegistry& registry);      // Color From/To Components
void registerTimePatches(PatchRegistry& registry);       // Patch Time, LFO, Interpolation, Timeline, clocks
void registerTextPatches(PatchRegistry& registry);       // Image With String, string patches, formatters
void registerImagePatches(PatchRegistry& registry);      // Image Importer, Dimensions, Screen Info, Video Input
void registerImageFilterPatches(PatchRegistry& registry);  // QCImageFilter (Core Image filters)
void registerImageKernelPatches(PatchRegistry& registry);  // QCImageKernel (Core Image kernels)
void registerStructurePatches(PatchRegistry& registry);  // Structure Member / Count
void registerPlugInPatches(PatchRegistry& registry);     // QCPlugInPatch: our two plug-ins
void registerScriptPatches(PatchRegistry& registry);     // JavaScript
void registerGeometryPatches(PatchRegistry& registry);   // Anchor Position
void registerDevicePatches(PatchRegistry& registry);     // Mouse, Keyboard, Mouse Interaction (no devices while rendering)
void registerNetworkPatches(PatchRegistry& registry);    // Image/XML Downloader, Syndication (fetched off the frame)
void registerFilePatches(PatchRegistry& registry);       // Directory Scanner
void registerCompositionPatches(PatchRegistry& registry);  // Patch Renderer, Patch Info, Repository Compositions
void registerThreeDPatches(PatchRegistry& registry);     // Track Ball, Replicator, Lighting, Sphere, Cube
void registerMeshPatches(PatchRegistry& registry);       // Mesh Creator, Renderer, Transform, Components, Bounds
void registerModelPatches(PatchRegistry& registry);      // Mesh Importer (3-D model files through Assimp)
void registerUtilityPatches(PatchRegistry& registry);    // Noise, String MD5, FPS Display
void registerOpenCLPatches(PatchRegistry& registry);     // OpenCL Kernel (run on the process's OpenCL device)
void registerNetworkMessagingPatches(PatchRegistry& registry);  // Network Broadcaster / Receiver (UDP, off the frame)
void registerEnvironmentPatches(PatchRegistry& registry);  // Projection, Fog
void registerShaderPatches(PatchRegistry& registry);     // GLSL Shader
void registerTeapotPatches(PatchRegistry& registry);     // Teapot
void registerRecursorPatches(PatchRegistry& registry);   // Recursor (feedback one frame late)
void registerPhysicsPatches(PatchRegistry& registry);    // Physics, Physics Effect (force)
void registerWatcherPatches(PatchRegistry& registry);    // Watcher (a pass-through while rendering)

inline void registerAllPatches(PatchRegistry& registry)
{
    registerMacroPatches(registry);
    registerRenderingPatches(registry);
    registerValuePatches(registry);
    registerMathPatches(registry);
    registerLogicPatches(registry);
    registerColorPatches(registry);
    registerTimePatches(registry);
    registerTextPatches(registry);
    registerImagePatches(registry);
    registerImageFilterPatches(registry);
    registerImageKernelPatches(registry);
    registerStructurePatches(registry);
    registerPlugInPatches(registry);
    registerScriptPatches(registry);
    registerGeometryPatches(registry);
    registerDevicePatches(registry);
    registerThreeDPatches(registry);
    registerMeshPatches(registry);
    registerModelPatches(registry);
    registerEnvironmentPatches(registry);
    registerShaderPatches(registry);
    registerTeapotPatches(registry);
    registerNetworkPatches(registry);
    registerFilePatches(registry);
    registerCompositionPatches(registry);
    registerUtilityPatches(registry);
    registerOpenCLPatches(registry);
    registerNetworkMessagingPatches(registry);
    registerRecursorPatches(registry);
    registerPhysicsPatches(registry);
    registerWatcherPatches(registry);
}

template <class T>
PatchRegistry::Factory factoryOf()
{
    return [](const PatchSetup& setup) -> std::unique_ptr<Patch> { return std::make_unique<T>(setup); };
}

}  // namespace runtime
