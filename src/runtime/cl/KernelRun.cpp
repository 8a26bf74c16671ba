#include "runtime/cl/KernelRun.h"

#include <condition_variable>
#include <cstring>
#include <mutex>

namespace runtime::cl {

namespace {

constexpr std::chrono::milliseconds kFirstRunAllowance{10000};

// Shared with OpenCL's completion callback, which may come after the run
// that waited for it has given up and gone.
struct Completion {
    std::mutex mutex;
    std::condition_variable done;
    bool complete = false;
    cl_int status = CL_COMPLETE;
};

void CL_CALLBACK onKernelComplete(cl_event, cl_int status, void* data)
{
    auto* completion = static_cast<std::shared_ptr<Completion>*>(data);
    {
        std::lock_guard lock((*completion)->mutex);
        (*completion)->complete = true;
        (*completion)->status = status;
    }
    (*completion)->done.notify_all();
    delete completion;
}

}  // namespace

KernelRun::KernelRun(Device& device, std::shared_ptr<const BuiltProgram> program, KernelSignature signature,
                     std::chrono::milliseconds timeout)
    : device_(device), program_(std::move(program)), signature_(std::move(signature)), memory_(signature_.parameters.size()),
      timeout_(timeout)
{
    if (!program_ || !program_->program) {
        error_ = QStringLiteral("the kernel did not build");
        return;
    }
    cl_int status = CL_SUCCESS;
    const QByteArray name = signature_.name.toUtf8();
    kernel_ = clCreateKernel(program_->program, name.constData(), &status);
    if (status != CL_SUCCESS) {
        kernel_ = nullptr;
        fail(QStringLiteral("cannot make the kernel %1").arg(signature_.name), status);
        return;
    }
    cl_uint argumentCount = 0;
    clGetKernelInfo(kernel_, CL_KERNEL_NUM_ARGS, sizeof argumentCount, &argumentCount, nullptr);
    if (argumentCount != signature_.parameters.size()) {
        // Our reading of the source disagrees with the compiler's (macros in
        // the parameter list, say): better no result than a wrong one.
        error_ = QStringLiteral("the kernel %1 has %2 parameters, not the %3 read from its source")
                     .arg(signature_.name).arg(argumentCount).arg(signature_.parameters.size());
        clReleaseKernel(kernel_);
        kernel_ = nullptr;
        return;
    }
    queue_ = clCreateCommandQueue(device_.context(), device_.id(), 0, &status);
    if (status != CL_SUCCESS) {
        queue_ = nullptr;
        clReleaseKernel(kernel_);
        kernel_ = nullptr;
        fail(QStringLiteral("cannot make a command queue"), status);
    }
}

KernelRun::~KernelRun()
{
    // A kernel given up on may still be using all of it.
    if (gaveUp_) return;
    if (queue_) clFinish(queue_);
    for (Memory& m : memory_)
        if (m.object) clReleaseMemObject(m.object);
    if (queue_) clReleaseCommandQueue(queue_);
    if (kernel_) clReleaseKernel(kernel_);
}

bool KernelRun::fail(const QString& what, cl_int status)
{
    error_ = QStringLiteral("%1: %2").arg(what, errorName(status));
    return false;
}

cl_mem KernelRun::bufferOf(std::size_t index, size_t bytes, cl_mem_flags flags, cl_int* status)
{
    Memory& m = memory_[index];
    if (m.object && m.bytes >= bytes) return m.object;
    if (m.object) clReleaseMemObject(m.object);
    m = {};
    m.object = clCreateBuffer(device_.context(), flags, bytes, nullptr, status);
    if (*status != CL_SUCCESS) m.object = nullptr;
    else m.bytes = bytes;
    return m.object;
}

cl_mem KernelRun::imageOf(std::size_t index, QSize size, cl_mem_flags flags, cl_int* status)
{
    Memory& m = memory_[index];
    if (m.object && m.size == size) return m.object;
    if (m.object) clReleaseMemObject(m.object);
    m = {};
    const cl_image_format format{CL_RGBA, CL_UNORM_INT8};
    cl_image_desc desc;
    std::memset(&desc, 0, sizeof desc);
    desc.image_type = CL_MEM_OBJECT_IMAGE2D;
    desc.image_width = size_t(size.width());
    desc.image_height = size_t(size.height());
    m.object = clCreateImage(device_.context(), flags, &format, &desc, nullptr, status);
    if (*status != CL_SUCCESS) m.object = nullptr;
    else m.size = size;
    return m.object;
}

bool KernelRun::waitForKernel(cl_event done)
{
    auto completion = std::make_shared<Completion>();
    auto* forCallback = new std::shared_ptr<Completion>(completion);
    cl_int status = clSetEventCallback(done, CL_COMPLETE, onKernelComplete, forCallback);
    if (status != CL_SUCCESS) {
        delete forCallback;
        status = clWaitForEvents(1, &done);
        clReleaseEvent(done);
        return status == CL_SUCCESS || fail(QStringLiteral("the kernel failed"), status);
    }
    clFlush(queue_);
    std::unique_lock lock(completion->mutex);
    const auto allowance = ranOnce_ ? std::chrono::milliseconds(0) : kFirstRunAllowance;
    ranOnce_ = true;
    const bool finished = completion->done.wait_for(lock, timeout_ + allowance, [&] { return completion->complete; });
    clReleaseEvent(done);  // the callback keeps its own reference until it has run
    if (!finished) {
        gaveUp_ = true;
        error_ = QStringLiteral("the kernel ran longer than %1 ms and is not run again").arg(timeout_.count());
        return false;
    }
    return completion->status == CL_COMPLETE || fail(QStringLiteral("the kernel failed"), completion->status);
}

bool KernelRun::run(QSize range, bool twoDimensional, std::vector<KernelArgument>& arguments)
{
    if (!kernel_ || gaveUp_) return false;
    if (arguments.size() != signature_.parameters.size()) {
        error_ = QStringLiteral("%1 arguments for %2 parameters").arg(arguments.size()).arg(signature_.parameters.size());
        return false;
    }
    const size_t items = size_t(range.width()) * size_t(range.height());
    if (items == 0) return true;
    cl_int status = CL_SUCCESS;
    using Kind = KernelParameter::Kind;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const KernelParameter& p = signature_.parameters[i];
        KernelArgument& a = arguments[i];
        const auto index = cl_uint(i);
        cl_mem object = nullptr;
        switch (p.kind) {
        case Kind::Value: {
            QByteArray value = a.bytes;
            value.resize(p.stride(), '\0');
            status = clSetKernelArg(kernel_, index, size_t(p.stride()), value.constData());
            break;
        }
        case Kind::InputBuffer: {
            // An empty structure still needs a buffer to point at.
            const size_t bytes = std::max(size_t(a.bytes.size()), size_t(p.stride()));
            object = bufferOf(i, bytes, CL_MEM_READ_ONLY, &status);
            if (object && !a.bytes.isEmpty())
                status = clEnqueueWriteBuffer(queue_, object, CL_TRUE, 0, size_t(a.bytes.size()), a.bytes.constData(), 0, nullptr, nullptr);
            break;
        }
        case Kind::OutputBuffer: {
            object = bufferOf(i, items * size_t(p.stride()), CL_MEM_READ_WRITE, &status);
            // Items the kernel leaves alone read as zero, not as last frame's.
            const cl_uint zero = 0;
            if (object) status = clEnqueueFillBuffer(queue_, object, &zero, sizeof zero, 0, items * size_t(p.stride()), 0, nullptr, nullptr);
            break;
        }
        case Kind::InputImage: {
            const QImage& image = a.image;
            object = imageOf(i, image.size(), CL_MEM_READ_ONLY, &status);
            const size_t origin[3] = {0, 0, 0};
            const size_t region[3] = {size_t(image.width()), size_t(image.height()), 1};
            if (object)
                status = clEnqueueWriteImage(queue_, object, CL_TRUE, origin, region, size_t(image.bytesPerLine()), 0,
                                             image.constBits(), 0, nullptr, nullptr);
            break;
        }
        case Kind::OutputImage:
            object = imageOf(i, range, CL_MEM_WRITE_ONLY, &status);
            break;
        }
        if (status != CL_SUCCESS) return fail(QStringLiteral("cannot pass the argument %1").arg(p.name), status);
        if (object) status = clSetKernelArg(kernel_, index, sizeof object, &object);
        if (status != CL_SUCCESS) return fail(QStringLiteral("cannot pass the argument %1").arg(p.name), status);
    }

    const size_t global[2] = {size_t(range.width()), size_t(range.height())};
    cl_event done = nullptr;
    status = clEnqueueNDRangeKernel(queue_, kernel_, twoDimensional ? 2 : 1, nullptr, global, nullptr, 0, nullptr, &done);
    if (status != CL_SUCCESS) {
        clFinish(queue_);
        return fail(QStringLiteral("cannot run the kernel"), status);
    }
    if (!waitForKernel(done)) {
        if (!gaveUp_) clFinish(queue_);
        return false;
    }

    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const KernelParameter& p = signature_.parameters[i];
        KernelArgument& a = arguments[i];
        if (p.kind == Kind::OutputBuffer) {
            a.bytes.resize(qsizetype(items * size_t(p.stride())));
            status = clEnqueueReadBuffer(queue_, memory_[i].object, CL_TRUE, 0, size_t(a.bytes.size()), a.bytes.data(), 0, nullptr, nullptr);
        } else if (p.kind == Kind::OutputImage) {
            a.image = QImage(range, QImage::Format_RGBA8888_Premultiplied);
            const size_t origin[3] = {0, 0, 0};
            const size_t region[3] = {size_t(range.width()), size_t(range.height()), 1};
            status = clEnqueueReadImage(queue_, memory_[i].object, CL_TRUE, origin, region, size_t(a.image.bytesPerLine()), 0,
                                        a.image.bits(), 0, nullptr, nullptr);
        }
        if (status != CL_SUCCESS) {
            clFinish(queue_);
            return fail(QStringLiteral("cannot read the result %1").arg(p.name), status);
        }
    }
    return true;
}

}  // namespace runtime::cl
