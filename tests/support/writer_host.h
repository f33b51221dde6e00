// A host's side of the SAX writer for tests: the writer pointer, the
// options record and the argument block, with the output collected.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <string>

#include "lumxml.h"

namespace lumtest {

// A host stream: the handle is the address of a std::string to append to.
inline int32_t appendToString(int64_t handle, int32_t, const void* bytes, uint32_t count, void*) {
    reinterpret_cast<std::string*>(handle)->append(static_cast<const char*>(bytes), count);
    return 0;
}

class HostWriter {
public:
    HostWriter() {
        WriterArgs args{};
        lumSAXWriterExecute(nullptr, LUM_WRITER_CREATE, &options, &args);
        writer = static_cast<SAXWriter*>(args.arg0);
    }
    ~HostWriter() {
        if (writer != nullptr) lumSAXWriterExecute(writer, LUM_WRITER_FREE, &options, nullptr);
        freeBlock();
    }
    HostWriter(const HostWriter&) = delete;
    HostWriter& operator=(const HostWriter&) = delete;

    // Runs a command with text (or pointer) arguments.
    int32_t run(int32_t command, const void* a0 = nullptr, const void* a1 = nullptr,
                const void* a2 = nullptr, const void* a3 = nullptr) {
        WriterArgs args{const_cast<void*>(a0), const_cast<void*>(a1), const_cast<void*>(a2),
                        const_cast<void*>(a3)};
        int32_t result = lumSAXWriterExecute(writer, command, &options, &args);
        if (command == LUM_WRITER_RESET) writer = static_cast<SAXWriter*>(args.arg0);
        if (command == LUM_WRITER_FREE) writer = nullptr;
        return result;
    }
    int32_t state() { return run(LUM_WRITER_GET_STATE); }

    // Opens the output on host memory (without a byte order mark by default).
    int32_t openMemory(int32_t kind = LUM_WRITER_TO_MEMORY) {
        options.outputKind = kind;
        return run(LUM_WRITER_OPEN);
    }
    // Opens the output on a host stream collecting into stream().
    int32_t openStream() {
        options.outputKind = LUM_WRITER_TO_STREAM;
        options.streamHandle = reinterpret_cast<int64_t>(&stream_);
        options.streamWrite = appendToString;
        return run(LUM_WRITER_OPEN);
    }

    // The memory block as the host sees it now.
    std::string memory() const {
        if (options.memoryBuffer == nullptr || options.memoryLength == nullptr) return "";
        return std::string(static_cast<const char*>(options.memoryBuffer), *options.memoryLength);
    }
    const std::string& stream() const { return stream_; }

    // The block is the host's once the output has been opened.
    void freeBlock() {
        std::free(options.memoryBuffer);
        options.memoryBuffer = nullptr;
    }
    std::string message() const { return options.message != nullptr ? options.message : ""; }

    SAXWriter* writer = nullptr;
    WriterOptions options{};

private:
    std::string stream_;
};

}  // namespace lumtest
