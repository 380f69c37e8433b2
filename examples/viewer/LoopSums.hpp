// How often each video has come round on this device, and the reports of it.
#pragma once

#include <map>
#include <memory>
#include <QTimer>
#include <string>

namespace KeloViewer {

class LoopSums : public QObject {
    Q_OBJECT

public:
    /// With the sums that an earlier run did not submit.
    static LoopSums& shared();

    void add(const std::string& postId);
    /// One record a post. What is submitted is forgotten, whatever becomes of it. Does nothing
    /// while the service cannot be reached.
    void submit();
    /// Submits, and runs the main queue for a moment until the reports are out.
    void submitAtTheEnd();

private:
    LoopSums();
    void keep() const;

    std::map<std::string, std::int64_t> _sums;
    // Counts the reports under way: an endpoint lives until its call has ended.
    std::vector<std::weak_ptr<void>> _underWay;
    QTimer _timer;
};

} // namespace KeloViewer
