// Recording GL table: wrappers generated from the driver's own list of GL entry points.
#include "support/gl_recorder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <sstream>
#include <tuple>
#include <type_traits>

namespace nvtest {

using norvgl::GlCall;

namespace {

GlRecorder* active = nullptr;

template <typename T> double asNumber(T value) {
    if constexpr (std::is_pointer_v<T>)
        return static_cast<double>(reinterpret_cast<std::uintptr_t>(value));
    else
        return static_cast<double>(value);
}

template <typename Tuple> std::vector<double> numbers(const Tuple& args) {
    return std::apply([](auto... a) { return std::vector<double>{asNumber(a)...}; }, args);
}

template <typename R, typename F> R forward(GlCall call, F&& f) {
    if constexpr (std::is_void_v<R>) {
        f();
        active->checkError(call);
    } else {
        R result = f();
        active->checkError(call);
        return result;
    }
}

#define NVGL_GL(result, name, params, args)                                                        \
    result NVGL_APIENTRY record_##name params {                                                    \
        active->log(GlCall::name, numbers(std::make_tuple args));                                  \
        return forward<result>(GlCall::name, [&] { return active->real().name args; });            \
    }
#include "platform/gl_funcs.inl"
#undef NVGL_GL

} // namespace

std::string RecordedCall::text() const {
    std::ostringstream out;
    out << norvgl::glCallName(call) << '(';
    for (std::size_t i = 0; i < args.size(); ++i)
        out << (i ? ", " : "") << args[i];
    out << ')';
    return out.str();
}

GlRecorder::GlRecorder() {
    real_ = norvgl::gl;
    active = this;
#define NVGL_GL(result, name, params, args) norvgl::gl.name = record_##name;
#include "platform/gl_funcs.inl"
#undef NVGL_GL
}

GlRecorder::~GlRecorder() {
    norvgl::gl = real_;
    active = nullptr;
    for (const std::string& error : errors_)
        ADD_FAILURE() << error;
}

void GlRecorder::log(GlCall call, std::vector<double> args) {
    if (call == GlCall::Begin)
        ++beginDepth_;
    calls_.push_back({call, std::move(args)});
}

void GlRecorder::checkError(GlCall call) {
    if (call == GlCall::End)
        --beginDepth_;
    // Asking for errors between glBegin and glEnd is itself an error.
    if (beginDepth_ > 0 || call == GlCall::GetError)
        return;
    const GLenum error = real_.GetError();
    if (error != GL_NO_ERROR)
        errors_.push_back(std::string(norvgl::glCallName(call)) + " raised GL error " +
                          std::to_string(error));
}

std::vector<RecordedCall> GlRecorder::only(std::initializer_list<GlCall> kinds) const {
    std::vector<RecordedCall> out;
    for (const RecordedCall& c : calls_)
        if (std::find(kinds.begin(), kinds.end(), c.call) != kinds.end())
            out.push_back(c);
    return out;
}

std::vector<std::string> GlRecorder::texts(std::initializer_list<GlCall> kinds) const {
    std::vector<std::string> out;
    for (const RecordedCall& c : only(kinds))
        out.push_back(c.text());
    return out;
}

std::size_t GlRecorder::count(GlCall kind) const {
    return static_cast<std::size_t>(std::count_if(
        calls_.begin(), calls_.end(), [kind](const RecordedCall& c) { return c.call == kind; }));
}

} // namespace nvtest
