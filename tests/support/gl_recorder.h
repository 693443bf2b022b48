// A recording GL table for call-sequence tests: every call the driver makes through `gl` is
// logged with its arguments and forwarded to the real GL. A GL error raised by any recorded
// call fails the test that recorded it, naming the call.
#pragma once

#include "platform/gl_table.h"

#include <initializer_list>
#include <string>
#include <vector>

namespace nvtest {

struct RecordedCall {
    norvgl::GlCall call;
    std::vector<double> args; // numbers as they are; pointers as their address
    std::string text() const;
};

class GlRecorder {
public:
    GlRecorder();
    ~GlRecorder();
    GlRecorder(const GlRecorder&) = delete;
    GlRecorder& operator=(const GlRecorder&) = delete;

    void clear() { calls_.clear(); }
    const std::vector<RecordedCall>& calls() const { return calls_; }
    // The calls of the given kinds, in order.
    std::vector<RecordedCall> only(std::initializer_list<norvgl::GlCall> kinds) const;
    // The same, as "glEnable(2884)" texts, for readable expectations.
    std::vector<std::string> texts(std::initializer_list<norvgl::GlCall> kinds) const;
    std::size_t count(norvgl::GlCall kind) const;

    // Used by the generated wrappers.
    void log(norvgl::GlCall call, std::vector<double> args);
    void checkError(norvgl::GlCall call);
    const norvgl::GlTable& real() const { return real_; }

private:
    norvgl::GlTable real_;
    std::vector<RecordedCall> calls_;
    std::vector<std::string> errors_;
    int beginDepth_ = 0;
};

// The state calls the flush may make between draws.
inline constexpr std::initializer_list<norvgl::GlCall> kStateCalls = {
    norvgl::GlCall::Enable,
    norvgl::GlCall::Disable,
    norvgl::GlCall::BlendFunc,
    norvgl::GlCall::BindTexture,
    norvgl::GlCall::TexEnvf,
    norvgl::GlCall::EnableClientState,
    norvgl::GlCall::DisableClientState};

} // namespace nvtest
