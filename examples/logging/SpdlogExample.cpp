// Logging through spdlog with Strand's tracing context in every line:
//
//   21:50:42.123 [worker:SpdlogExample.cpp:76:main] SpdlogExample.cpp:65:lookUpContact
//       externalInputHint=click hint042017 contact 42 found   (one line)
//
// in brackets the thread's name (the flag %N), then the call site as a
// quill::source::location with the hint it captured, then the message.
//
// An input thread creates a hint and hands a job to a worker through a source
// location; the worker names itself for the job's scope and logs. Every line
// carries the thread's name and the call site with the input's hint, so a log
// reader can follow the click across threads.
#include <Strand/Strand.h>

#include <fmt/format.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/spdlog.h>

#include <memory>
#include <string>
#include <string_view>
#include <thread>

// A location prints as "File.cpp:120:function externalInputHint=name id"
// (to_string is cheaper than going through the stream operator).
template <>
struct fmt::formatter<quill::source::location> : fmt::formatter<std::string_view> {
    template <typename Context>
    auto format(const quill::source::location& where, Context& context) const {
        return fmt::formatter<std::string_view>::format(where.to_string(), context);
    }
};

// The flag %N: the name of the thread that formats the line. With a
// synchronous logger that is the thread that logs; an asynchronous logger
// formats on its own worker thread, so there pass the name as an argument.
class ThreadNameFlag : public spdlog::custom_flag_formatter {
public:
    void format(const spdlog::details::log_msg&, const std::tm&,
                spdlog::memory_buf_t& dest) override {
        const std::string name = Strand::getThreadName();
        dest.append(name.data(), name.data() + name.size());
    }
    std::unique_ptr<custom_flag_formatter> clone() const override {
        return std::make_unique<ThreadNameFlag>();
    }
};

#define HERE quill::source::location::current(__FILE__, __LINE__, __func__)
// Logs at info level with the call site (and the hint it captures) in front.
#define LOG_INFO(logger, format, ...) (logger).info("{} " format, HERE __VA_OPT__(, ) __VA_ARGS__)

namespace {

std::shared_ptr<spdlog::logger> makeLogger() {
    auto formatter = std::make_unique<spdlog::pattern_formatter>();
    formatter->add_flag<ThreadNameFlag>('N').set_pattern("%H:%M:%S.%e [%N] %v");
    auto logger = std::make_shared<spdlog::logger>(
        "client", std::make_shared<spdlog::sinks::stdout_sink_mt>());
    logger->set_formatter(std::move(formatter));
    return logger;
}

void lookUpContact(spdlog::logger& log, int contact) { LOG_INFO(log, "contact {} found", contact); }

}  // namespace

int main() {
    const auto log = makeLogger();
    Strand::setThreadName("input");
    LOG_INFO(*log, "waiting for input");

    const auto click = quill::external_input::hint::createExternalInputHint("click");
    LOG_INFO(*log, "click on the Call button");
    const quill::source::location handedOver = HERE;
    std::thread worker([&log, handedOver] {
        // Named after the hand-over for the scope; takes the click's hint.
        const Strand::ScopedThreadName scope("worker", handedOver);
        lookUpContact(*log, 42);
    });
    worker.join();
    LOG_INFO(*log, "done");
}
