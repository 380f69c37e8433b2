#pragma once

#include <KeloAPI/KeloAPI.hpp>

#include <memory>
#include <mutex>
#include <string>
#include <utility>

namespace KeloHost {

/// A file whose download can be cancelled, which `FileEndpoint` by itself does not offer. What came
/// of the file until then is removed. For a `FileQueue`: its completions are called at once. The
/// session key goes with it only to the service itself.
class CancellableFile : public KeloAPI::FileEndpoint {
public:
    using FileEndpoint::download;
    void download(const KeloAPI::URL& destination, Completion completion,
                  KeloAPI::DownloadDelivery /*delivery*/) override {
        const auto self = std::static_pointer_cast<CancellableFile>(shared_from_this());
        if (localUrl()) {
            completion(KeloAPI::FileDownloadSuccess{self});
            return;
        }
        const std::lock_guard lock(_mutex);
        _request = session()->sessionManager()->download(*this, destination);
        _request->progress(_progress);
        _request->response([self, completion = std::move(completion)](
                               const KeloAPI::ResponseContent& content, KeloAPI::Timeline) {
            if (content.error) {
                completion(KeloAPI::FileDownloadResult::Error{*content.error});
            } else {
                completion(KeloAPI::FileDownloadSuccess{self});
            }
            return nullptr;
        });
        if (_isCancelled) {
            _request->cancel();
        }
    }

    /// Ends the download that is under way, and each that begins later.
    void cancel() {
        const std::lock_guard lock(_mutex);
        _isCancelled = true;
        if (_request) {
            _request->cancel();
        }
    }

    KeloAPI::HeaderFields headerFields() const override {
        KeloAPI::HeaderFields fields = FileEndpoint::headerFields();
        const auto url = KeloAPI::URL::parse(path());
        if (!url || !url->hasOriginOf(_service)) {
            fields.erase("kelo-session-id");
        }
        return fields;
    }

protected:
    CancellableFile(Key key, std::string path, std::shared_ptr<KeloAPI::FileManager> fileManager,
                    KeloAPI::URL service, KeloAPI::Request::Progress progress)
        : FileEndpoint(key, std::move(path), std::move(fileManager))
        , _service(std::move(service))
        , _progress(std::move(progress)) {}

private:
    const KeloAPI::URL _service;
    const KeloAPI::Request::Progress _progress;
    // The queue downloads on a thread of its own.
    std::mutex _mutex;
    std::shared_ptr<KeloAPI::Request> _request;
    bool _isCancelled = false;
};

} // namespace KeloHost
