#include "runtime/cl/ClDevice.h"

#include <QByteArray>

#include <vector>

namespace runtime::cl {

QString errorName(cl_int code)
{
    const char* name = "unknown error";
    switch (code) {
    case CL_DEVICE_NOT_FOUND: name = "CL_DEVICE_NOT_FOUND"; break;
    case CL_DEVICE_NOT_AVAILABLE: name = "CL_DEVICE_NOT_AVAILABLE"; break;
    case CL_COMPILER_NOT_AVAILABLE: name = "CL_COMPILER_NOT_AVAILABLE"; break;
    case CL_MEM_OBJECT_ALLOCATION_FAILURE: name = "CL_MEM_OBJECT_ALLOCATION_FAILURE"; break;
    case CL_OUT_OF_RESOURCES: name = "CL_OUT_OF_RESOURCES"; break;
    case CL_OUT_OF_HOST_MEMORY: name = "CL_OUT_OF_HOST_MEMORY"; break;
    case CL_IMAGE_FORMAT_NOT_SUPPORTED: name = "CL_IMAGE_FORMAT_NOT_SUPPORTED"; break;
    case CL_BUILD_PROGRAM_FAILURE: name = "CL_BUILD_PROGRAM_FAILURE"; break;
    case CL_INVALID_VALUE: name = "CL_INVALID_VALUE"; break;
    case CL_INVALID_PLATFORM: name = "CL_INVALID_PLATFORM"; break;
    case CL_INVALID_DEVICE: name = "CL_INVALID_DEVICE"; break;
    case CL_INVALID_MEM_OBJECT: name = "CL_INVALID_MEM_OBJECT"; break;
    case CL_INVALID_IMAGE_SIZE: name = "CL_INVALID_IMAGE_SIZE"; break;
    case CL_INVALID_PROGRAM_EXECUTABLE: name = "CL_INVALID_PROGRAM_EXECUTABLE"; break;
    case CL_INVALID_KERNEL_NAME: name = "CL_INVALID_KERNEL_NAME"; break;
    case CL_INVALID_ARG_INDEX: name = "CL_INVALID_ARG_INDEX"; break;
    case CL_INVALID_ARG_VALUE: name = "CL_INVALID_ARG_VALUE"; break;
    case CL_INVALID_ARG_SIZE: name = "CL_INVALID_ARG_SIZE"; break;
    case CL_INVALID_KERNEL_ARGS: name = "CL_INVALID_KERNEL_ARGS"; break;
    case CL_INVALID_WORK_DIMENSION: name = "CL_INVALID_WORK_DIMENSION"; break;
    case CL_INVALID_WORK_GROUP_SIZE: name = "CL_INVALID_WORK_GROUP_SIZE"; break;
    case CL_INVALID_GLOBAL_WORK_SIZE: name = "CL_INVALID_GLOBAL_WORK_SIZE"; break;
    case CL_INVALID_BUFFER_SIZE: name = "CL_INVALID_BUFFER_SIZE"; break;
    case -1001: name = "no OpenCL platform (CL_PLATFORM_NOT_FOUND_KHR)"; break;
    default: break;
    }
    return QStringLiteral("%1 (%2)").arg(QLatin1String(name)).arg(code);
}

BuiltProgram::~BuiltProgram()
{
    if (program) clReleaseProgram(program);
}

namespace {

QString deviceString(cl_device_id device, cl_device_info what)
{
    size_t size = 0;
    if (clGetDeviceInfo(device, what, 0, nullptr, &size) != CL_SUCCESS || size == 0) return {};
    QByteArray bytes(qsizetype(size), '\0');
    clGetDeviceInfo(device, what, size, bytes.data(), nullptr);
    return QString::fromUtf8(bytes.constData()).trimmed();
}

// The first GPU of any platform, else the first device of any type.
cl_device_id chooseDevice(QString* reason)
{
    cl_uint platformCount = 0;
    const cl_int status = clGetPlatformIDs(0, nullptr, &platformCount);
    if (status != CL_SUCCESS || platformCount == 0) {
        *reason = QStringLiteral("no OpenCL device: no OpenCL platform is installed");
        return nullptr;
    }
    std::vector<cl_platform_id> platforms(platformCount);
    clGetPlatformIDs(platformCount, platforms.data(), nullptr);
    for (const cl_device_type type : {cl_device_type(CL_DEVICE_TYPE_GPU), cl_device_type(CL_DEVICE_TYPE_ALL)})
        for (cl_platform_id platform : platforms) {
            cl_device_id device = nullptr;
            cl_uint count = 0;
            if (clGetDeviceIDs(platform, type, 1, &device, &count) == CL_SUCCESS && count > 0) return device;
        }
    *reason = QStringLiteral("no OpenCL device: the installed platforms offer none");
    return nullptr;
}

}  // namespace

Device* Device::shared(QString* reason)
{
    // Looked up once per process: a missing device does not appear later.
    static QString failure;
    static Device* device = [] () -> Device* {
        cl_device_id id = chooseDevice(&failure);
        if (!id) return nullptr;
        cl_int status = CL_SUCCESS;
        cl_context context = clCreateContext(nullptr, 1, &id, nullptr, nullptr, &status);
        if (status != CL_SUCCESS || !context) {
            failure = QStringLiteral("no OpenCL device: cannot make a context: %1").arg(errorName(status));
            return nullptr;
        }
        auto* d = new Device;  // lives as long as the process: kernels may be released late
        d->device_ = id;
        d->context_ = context;
        d->description_ = deviceString(id, CL_DEVICE_NAME) + QStringLiteral(", ") + deviceString(id, CL_DEVICE_VERSION);
        return d;
    }();
    if (!device && reason) *reason = failure;
    return device;
}

std::shared_ptr<const BuiltProgram> Device::build(const QString& source)
{
    std::lock_guard lock(mutex_);
    if (auto found = programs_.find(source); found != programs_.end()) return found->second;

    auto built = std::make_shared<BuiltProgram>();
    const QByteArray text = source.toUtf8();
    const char* pointer = text.constData();
    const size_t length = size_t(text.size());
    cl_int status = CL_SUCCESS;
    cl_program program = clCreateProgramWithSource(context_, 1, &pointer, &length, &status);
    if (status != CL_SUCCESS) {
        built->log = QStringLiteral("cannot make a program: %1").arg(errorName(status));
    } else {
        status = clBuildProgram(program, 1, &device_, "-cl-kernel-arg-info", nullptr, nullptr);
        size_t logSize = 0;
        clGetProgramBuildInfo(program, device_, CL_PROGRAM_BUILD_LOG, 0, nullptr, &logSize);
        if (logSize > 1) {
            QByteArray log(qsizetype(logSize), '\0');
            clGetProgramBuildInfo(program, device_, CL_PROGRAM_BUILD_LOG, logSize, log.data(), nullptr);
            built->log = QString::fromUtf8(log.constData()).trimmed();
        }
        if (status == CL_SUCCESS) {
            built->program = program;
        } else {
            if (built->log.isEmpty()) built->log = errorName(status);
            clReleaseProgram(program);
        }
    }
    programs_.emplace(source, built);
    return built;
}

}  // namespace runtime::cl
