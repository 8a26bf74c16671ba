#include "plist/PropertyList.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

namespace plist {

std::optional<Value> read(std::string_view bytes, std::string* error, Format* format)
{
    if (bytes.substr(0, 6) == "bplist") {
        if (format) *format = Format::Binary;
        return readBinary(bytes, error);
    }
    if (format) *format = Format::Xml;
    return readXml(bytes, error);
}

std::optional<Value> readFile(const std::string& path, std::string* error, Format* format)
{
    std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "rb"), &std::fclose);
    if (!file) {
        if (error) *error = std::strerror(errno);
        return std::nullopt;
    }
    std::string bytes;
    char buffer[1 << 16];
    std::size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, file.get())) > 0) bytes.append(buffer, n);
    if (std::ferror(file.get())) {
        if (error) *error = std::strerror(errno);
        return std::nullopt;
    }
    return read(bytes, error, format);
}

std::optional<std::string> write(const Value& root, Format format, std::string* error)
{
    return format == Format::Xml ? writeXml(root, error) : writeBinary(root, error);
}

}  // namespace plist
