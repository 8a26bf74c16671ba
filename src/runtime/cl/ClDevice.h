#pragma once
// The process's OpenCL device, found once through the ICD loader: the
// first GPU of any platform, else the first device of any kind (PoCL's CPU
// device on machines without a GPU). Programs are built once per source
// text and shared; what runs them (kernels, queues, buffers) belongs to each
// patch, so renderers on different threads never share mutable objects.

#include <CL/cl.h>

#include <QString>

#include <memory>
#include <mutex>
#include <map>

namespace runtime::cl {

// "CL_BUILD_PROGRAM_FAILURE (-11)".
QString errorName(cl_int code);

struct BuiltProgram {
    cl_program program = nullptr;  // null when the build failed
    QString log;                   // the compiler's messages
    ~BuiltProgram();
};

class Device {
public:
    // Null when there is no platform or no device; `reason` then says so.
    static Device* shared(QString* reason = nullptr);

    cl_context context() const { return context_; }
    cl_device_id id() const { return device_; }
    QString description() const { return description_; }

    // Built with kernel argument information; cached by source text.
    std::shared_ptr<const BuiltProgram> build(const QString& source);

    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

private:
    Device() = default;
    cl_device_id device_ = nullptr;
    cl_context context_ = nullptr;
    QString description_;
    std::mutex mutex_;
    std::map<QString, std::shared_ptr<const BuiltProgram>> programs_;
};

}  // namespace runtime::cl
