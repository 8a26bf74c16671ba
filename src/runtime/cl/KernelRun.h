#pragma once
// Runs one built kernel over a 1-D or 2-D range, keeping its queue and its
// device buffers and images from call to call (they grow when a call needs
// more, and are otherwise reused). One instance per patch: it is not
// shared between threads.

#include "runtime/cl/ClDevice.h"
#include "runtime/cl/KernelSignature.h"

#include <QByteArray>
#include <QImage>
#include <QSize>

#include <chrono>
#include <vector>

namespace runtime::cl {

// One argument, in or out, in the order of the kernel's parameters.
struct KernelArgument {
    QByteArray bytes;  // a value, an input buffer's elements, or an output buffer's result
    QImage image;      // input or output image: RGBA8888_Premultiplied, rows bottom-up
};

class KernelRun {
public:
    // A kernel still running after `timeout` is given up: OpenCL cannot stop
    // it, so the frame goes on without its result and this run is not used
    // again (its device objects are left to the kernel, never released).
    // The first run may take 10 s more: devices such as PoCL compile the
    // kernel for its range only when it is first run.
    KernelRun(Device& device, std::shared_ptr<const BuiltProgram> program, KernelSignature signature,
              std::chrono::milliseconds timeout = std::chrono::milliseconds(2000));
    ~KernelRun();
    KernelRun(const KernelRun&) = delete;
    KernelRun& operator=(const KernelRun&) = delete;

    bool isValid() const { return kernel_ != nullptr; }
    bool gaveUp() const { return gaveUp_; }
    const QString& error() const { return error_; }

    // Runs over `range` (height 1 for a 1-D range). Inputs are read from
    // `arguments`; output buffers get range.width × range.height elements
    // and output images the range's size. False with error() on failure.
    bool run(QSize range, bool twoDimensional, std::vector<KernelArgument>& arguments);

private:
    struct Memory {
        cl_mem object = nullptr;
        size_t bytes = 0;  // buffers: capacity
        QSize size;        // images
    };
    bool fail(const QString& what, cl_int status);
    bool waitForKernel(cl_event done);
    cl_mem bufferOf(std::size_t index, size_t bytes, cl_mem_flags flags, cl_int* status);
    cl_mem imageOf(std::size_t index, QSize size, cl_mem_flags flags, cl_int* status);

    Device& device_;
    std::shared_ptr<const BuiltProgram> program_;
    KernelSignature signature_;
    cl_kernel kernel_ = nullptr;
    cl_command_queue queue_ = nullptr;
    std::vector<Memory> memory_;  // per parameter
    std::chrono::milliseconds timeout_;
    bool gaveUp_ = false;
    bool ranOnce_ = false;
    QString error_;
};

}  // namespace runtime::cl
