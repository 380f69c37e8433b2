#pragma once

#include <KeloAPI/KeloAPI.hpp>

#include <coroutine>
#include <cstdint>
#include <exception>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

/// The library's calls for coroutines and futures. Optional: no other header includes this one, and
/// all of it is made of the classes' own completions.
///
///     async::Task<> showFeed() {
///         const TimelineResult feed = co_await async::fetch(TimelineEndpoint::create("popular"));
///         ...
///     }
namespace KeloAPI::async {

/// Which of a call's completions is waited for. A call that the service refuses until the user has
/// signed in or solved a captcha completes at once, and again when it has been sent anew.
enum class Wait : std::uint8_t {
    /// The first one, whatever it says; later ones are dropped.
    First,
    /// The first one that does not say so. For hosts whose delegate signs the user in and has the
    /// captcha solved, and then calls `Session::handleQueuedRetries(true)`: a call that is not sent
    /// again never resumes its coroutine.
    AfterRetry
};

namespace detail {

template <class R>
const Error* errorOf(const R& result) {
    return result.error();
}
template <class T>
const Error* errorOf(const Result<T>& result) {
    return result ? nullptr : &result.error();
}
inline const Error* errorOf(const std::optional<Error>& error) {
    return error ? &*error : nullptr;
}

/// True for what a session queues a retry for.
inline bool asksTheUser(const Error* error) {
    const auto code = error == nullptr ? 0 : error->integer(KLAPIStatusCodeKey).value_or(0);
    return code == 100 || code == 103 || code == 419;
}

/// What promises of tasks with and without a value have in common.
struct TaskPromise {
    std::coroutine_handle<> waiter;
    std::exception_ptr exception;

    struct Final {
        bool await_ready() const noexcept { return false; }
        template <class Promise>
        std::coroutine_handle<> await_suspend(std::coroutine_handle<Promise> task) noexcept {
            const auto resumed = task.promise().waiter;
            return resumed ? resumed : std::noop_coroutine();
        }
        void await_resume() const noexcept {}
    };

    std::suspend_never initial_suspend() const noexcept { return {}; }
    Final final_suspend() const noexcept { return {}; }
    void unhandled_exception() { exception = std::current_exception(); }
};

template <class T>
struct ValuePromise : TaskPromise {
    std::optional<T> value;
    void return_value(T result) { value = std::move(result); }
    T take() { return *std::move(value); }
};

template <>
struct ValuePromise<void> : TaskPromise {
    void return_void() {}
    void take() {}
};

} // namespace detail

/// A coroutine of a host's. It begins at once, and belongs to this object: when that goes while the
/// coroutine waits, the coroutine goes, and with it the call it waits for. Another coroutine may
/// wait for it. One thread at a time.
template <class T = void>
class [[nodiscard]] Task {
public:
    struct promise_type : detail::ValuePromise<T> {
        Task get_return_object() {
            return Task(std::coroutine_handle<promise_type>::from_promise(*this));
        }
    };

    /// Leaves the other one without a coroutine.
    Task(Task&& other) noexcept
        : _coroutine(std::exchange(other._coroutine, nullptr)) {}
    /// Swaps the two.
    Task& operator=(Task&& other) noexcept {
        std::swap(_coroutine, other._coroutine);
        return *this;
    }
    ~Task() {
        if (_coroutine) {
            _coroutine.destroy();
        }
    }

    /// Whether the coroutine has returned, or an exception has left it.
    bool isDone() const { return _coroutine.done(); }
    /// What the coroutine returned; throws what left it. Once, and only when it is done.
    T result() {
        auto& promise = _coroutine.promise();
        if (promise.exception) {
            std::rethrow_exception(promise.exception);
        }
        return promise.take();
    }

    bool await_ready() const noexcept { return isDone(); } ///< For `co_await`.
    /// For `co_await`.
    void await_suspend(std::coroutine_handle<> waiter) noexcept {
        _coroutine.promise().waiter = waiter;
    }
    T await_resume() { return result(); } ///< For `co_await`: as `result`.

private:
    explicit Task(std::coroutine_handle<promise_type> coroutine)
        : _coroutine(coroutine) {}

    std::coroutine_handle<promise_type> _coroutine;
};

/// A call that is sent when it is awaited, and resumes its coroutine once, on the main queue. When
/// it goes before that, a call that has a handle is cancelled; another runs to its end, and nobody
/// hears of it. Await it on the thread that runs the main queue, and let it go there.
template <class R>
class [[nodiscard]] Call {
public:
    using Completion = std::function<void(R)>; ///< Takes the result.
    /// Sends the call, and gives its handle where it has one.
    using Send = std::function<std::shared_ptr<EndpointRequest>(Completion)>;

    /// Sends nothing yet.
    explicit Call(Send send, Wait wait = Wait::First)
        : _send(std::move(send))
        , _wait(wait) {}
    Call(Call&&) noexcept = default; ///< Not while it is awaited.
    Call& operator=(Call&&) = delete;
    ~Call() {
        if (_waiting) {
            _waiting->coroutine = nullptr; // with a result, too, it may be about to be resumed
        }
        if (_waiting && !_waiting->result && _handle) {
            _handle->cancel();
        }
    }

    bool await_ready() const noexcept { return false; } ///< For `co_await`: it always waits.
    /// For `co_await`: sends the call. Only on the thread that runs the main queue, where nothing
    /// can resume the coroutine before it is suspended.
    void await_suspend(std::coroutine_handle<> coroutine) {
        _waiting = std::make_shared<Waiting>();
        _waiting->coroutine = coroutine;
        _handle = start([waiting = _waiting](R result) { waiting->take(std::move(result)); });
        _waiting->isSent = true;
    }
    R await_resume() { return *std::move(_waiting->result); } ///< For `co_await`: the result.

    /// Sends the call and hands `completion` the one result. Null where the call has no handle.
    std::shared_ptr<EndpointRequest> start(Completion completion) {
        return _send([wait = _wait,
                      completion = std::make_shared<Completion>(std::move(completion))](R result) {
            const bool isAwaited =
                wait == Wait::First || !detail::asksTheUser(detail::errorOf(result));
            if (*completion && isAwaited) {
                std::exchange(*completion, nullptr)(std::move(result));
            }
        });
    }

private:
    struct Waiting : std::enable_shared_from_this<Waiting> {
        std::coroutine_handle<> coroutine;
        std::optional<R> result;
        bool isSent = false;

        void take(R taken) {
            result = std::move(taken);
            if (isSent) {
                resume();
            } else { // a file that is there already completes inside the call
                MainQueue::main().async([self = this->shared_from_this()] { self->resume(); });
            }
        }
        void resume() {
            if (coroutine) {
                std::exchange(coroutine, nullptr).resume();
            }
        }
    };

    Send _send;
    Wait _wait;
    std::shared_ptr<Waiting> _waiting;
    std::shared_ptr<EndpointRequest> _handle;
};

/// Sends the call at once, for a thread that may block. The main queue must run on another.
template <class R>
std::future<R> futureOf(Call<R> call) {
    auto promise = std::make_shared<std::promise<R>>();
    auto future = promise->get_future();
    call.start([promise](R result) { promise->set_value(std::move(result)); });
    return future;
}

namespace detail {

/// A call whose completion brings a value and an optional error.
template <class T, class Send>
Call<Result<T>> callWithValue(Send send, Wait wait) {
    return Call<Result<T>>(
        [send = std::move(send)](typename Call<Result<T>>::Completion completion) {
            return send([completion = std::move(completion)](T value, std::optional<Error> error) {
                completion(error ? Result<T>(*std::move(error)) : Result<T>(std::move(value)));
            });
        },
        wait);
}

/// A call whose completion brings its one result, and which has no handle.
template <class R, class Send>
Call<R> callWithoutHandle(Send send, Wait wait) {
    return Call<R>(
        [send = std::move(send)](typename Call<R>::Completion completion) {
            send(std::move(completion));
            return std::shared_ptr<EndpointRequest>();
        },
        wait);
}

} // namespace detail

/// See `MeEndpoint::get`.
inline Call<MeResult> fetch(const std::shared_ptr<MeEndpoint>& endpoint, Wait wait = Wait::First) {
    return detail::callWithoutHandle<MeResult>(
        [endpoint](auto completion) { endpoint->get(std::move(completion)); }, wait);
}

/// See `TimelineEndpoint::fetch`.
inline Call<TimelineResult> fetch(const std::shared_ptr<TimelineEndpoint>& endpoint,
                                  Wait wait = Wait::First) {
    return detail::callWithoutHandle<TimelineResult>(
        [endpoint](auto completion) { endpoint->fetch(std::move(completion)); }, wait);
}

/// See `PostActionEndpoint::toggle`.
template <class E, class P = std::remove_cvref_t<decltype(*std::declval<E&>().parser())>>
Call<PostActionResult<typename P::T>> toggle(const std::shared_ptr<E>& endpoint, bool on,
                                             Wait wait = Wait::First) {
    return detail::callWithoutHandle<PostActionResult<typename P::T>>(
        [endpoint, on](auto completion) { endpoint->toggle(on, std::move(completion)); }, wait);
}

/// See `UserEndpoint::setFollowingOnTwitter`.
inline Call<UserResult> setFollowingOnTwitter(const std::shared_ptr<UserEndpoint>& endpoint,
                                              bool following, Wait wait = Wait::First) {
    return detail::callWithoutHandle<UserResult>(
        [endpoint, following](auto completion) {
            endpoint->setFollowingOnTwitter(following, std::move(completion));
        },
        wait);
}

/// The destination becomes the file. See `FileEndpoint::download`.
inline Call<FileDownloadResult> download(const std::shared_ptr<FileEndpoint>& endpoint,
                                         const URL& destination, Wait wait = Wait::First) {
    return detail::callWithoutHandle<FileDownloadResult>(
        [endpoint, destination](auto completion) {
            endpoint->download(destination, std::move(completion));
        },
        wait);
}

/// See `SoundboardEndpoint::fetchSounds`.
inline Call<Result<std::vector<std::shared_ptr<SoundboardSound>>>>
fetchSounds(const std::shared_ptr<SoundboardEndpoint>& endpoint, Wait wait = Wait::First) {
    return detail::callWithValue<std::vector<std::shared_ptr<SoundboardSound>>>(
        [endpoint](auto completion) { return endpoint->fetchSounds(std::move(completion)); }, wait);
}

/// Null views where the response held none.
inline Call<Result<std::shared_ptr<KLLongformViews>>>
fetchViews(const std::shared_ptr<LongformViewsEndpoint>& endpoint, Wait wait = Wait::First) {
    return detail::callWithValue<std::shared_ptr<KLLongformViews>>(
        [endpoint](auto completion) { return endpoint->fetchViews(std::move(completion)); }, wait);
}

/// Absent without an error.
inline Call<std::optional<Error>> submitView(const std::shared_ptr<LongformViewsEndpoint>& endpoint,
                                             Wait wait = Wait::First) {
    return Call<std::optional<Error>>(
        [endpoint](auto completion) { return endpoint->submitView(std::move(completion)); }, wait);
}

/// See `RecommendationsEndpoint::addUserFeedback`.
inline Call<RecommendationResult>
addUserFeedback(const std::shared_ptr<RecommendationsEndpoint>& endpoint, const std::string& userId,
                RecommendationBoost boost, Wait wait = Wait::First) {
    return detail::callWithoutHandle<RecommendationResult>(
        [endpoint, userId, boost](auto completion) {
            endpoint->addUserFeedback(userId, boost, std::move(completion));
        },
        wait);
}

/// See `RecommendationsEndpoint::addPostFeedback`.
inline Call<RecommendationResult>
addPostFeedback(const std::shared_ptr<RecommendationsEndpoint>& endpoint, const std::string& postId,
                RecommendationBoost boost, Wait wait = Wait::First) {
    return detail::callWithoutHandle<RecommendationResult>(
        [endpoint, postId, boost](auto completion) {
            endpoint->addPostFeedback(postId, boost, std::move(completion));
        },
        wait);
}

/// The upload as the service describes it, or the error in its place.
using UploadResult = Result<std::shared_ptr<KLVideoUpload>>;

/// See `LongformUploadEndpoint::initiateUpload`.
inline Call<UploadResult> initiateUpload(const std::shared_ptr<LongformUploadEndpoint>& endpoint,
                                         std::int64_t totalBytes, Wait wait = Wait::First) {
    return detail::callWithValue<std::shared_ptr<KLVideoUpload>>(
        [endpoint, totalBytes](auto completion) {
            return endpoint->initiateUpload(totalBytes, std::move(completion));
        },
        wait);
}

/// Absent without an error.
inline Call<std::optional<Error>>
uploadSegment(const std::shared_ptr<LongformUploadEndpoint>& endpoint, const std::string& mediaId,
              const Data& data, std::int64_t segmentIndex, Wait wait = Wait::First) {
    return Call<std::optional<Error>>(
        [endpoint, mediaId, data, segmentIndex](auto completion) {
            return endpoint->uploadSegment(mediaId, data, segmentIndex, std::move(completion));
        },
        wait);
}

/// See `LongformUploadEndpoint::finalizeUpload`.
inline Call<UploadResult> finalizeUpload(const std::shared_ptr<LongformUploadEndpoint>& endpoint,
                                         const std::string& mediaId, Wait wait = Wait::First) {
    return detail::callWithValue<std::shared_ptr<KLVideoUpload>>(
        [endpoint, mediaId](auto completion) {
            return endpoint->finalizeUpload(mediaId, std::move(completion));
        },
        wait);
}

/// See `LongformUploadEndpoint::checkStatus`.
inline Call<UploadResult> checkStatus(const std::shared_ptr<LongformUploadEndpoint>& endpoint,
                                      const std::string& mediaId, Wait wait = Wait::First) {
    return detail::callWithValue<std::shared_ptr<KLVideoUpload>>(
        [endpoint, mediaId](auto completion) {
            return endpoint->checkStatus(mediaId, std::move(completion));
        },
        wait);
}

/// Reads a timeline page by page, in one direction.
class TimelinePages {
public:
    /// `first` is the endpoint of the page to begin with, or to go on with.
    explicit TimelinePages(std::shared_ptr<TimelineEndpoint> first)
        : _next(std::move(first)) {}

    /// The next page; absent behind the last one. After an error, the same page once more. One call
    /// at a time, and this object must outlive it.
    Task<std::optional<TimelineResult>> next(Wait wait = Wait::First) {
        if (!_next) {
            co_return std::nullopt;
        }
        const TimelineResult result = co_await fetch(_next, wait);
        if (const auto* page = result.success()) {
            _next = page->nextPage;
        }
        co_return result;
    }

    /// To go on with later: its path and parameters are those of the page that comes next. Null
    /// behind the last one.
    const std::shared_ptr<TimelineEndpoint>& nextEndpoint() const { return _next; }

private:
    std::shared_ptr<TimelineEndpoint> _next;
};

} // namespace KeloAPI::async
