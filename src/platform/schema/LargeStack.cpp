#include "platform/schema/LargeStack.h"

#include <exception>
#include <pthread.h>
#include <system_error>

namespace tavrin {

namespace {

struct Job {
    const std::function<void()>& work;
    std::exception_ptr failure = nullptr;
};

void* run(void* argument) {
    auto& job = *static_cast<Job*>(argument);
    try {
        job.work();
    } catch (...) { // handed to the thread that waits
        job.failure = std::current_exception();
    }
    return nullptr;
}

} // namespace

void runOnLargeStack(std::size_t size, const std::function<void()>& work) {
    Job job{work};
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_t thread = {};
    int status = pthread_attr_setstacksize(&attributes, size);
    if (status == 0)
        status = pthread_create(&thread, &attributes, &run, &job);
    pthread_attr_destroy(&attributes);
    if (status != 0)
        throw std::system_error(status, std::generic_category(), "no thread for reading");
    pthread_join(thread, nullptr);
    if (job.failure)
        std::rethrow_exception(job.failure);
}

} // namespace tavrin
