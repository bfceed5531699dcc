#pragma once

#include <QObject>
#include <QProcess>
#include <QString>
#include <QTimer>
#include <chrono>
#include <functional>
#include <string>

namespace kestrav {

/// Puts together what somebody who helps wants to see: the program, the computer, what the window says, what happened
/// so far, and what `kestravctl doctor` finds, which takes a moment. Used on the main thread.
class SupportText final : public QObject {
  public:
    using Ready = std::function<void(const QString& text)>;

    /// `doctor` is the program that is asked with the word "doctor", and what it says within `patience` counts.
    explicit SupportText(QObject* parent, QString doctor = ownDoctor(),
                         std::chrono::milliseconds patience = std::chrono::seconds(20));
    ~SupportText() override;
    SupportText(const SupportText&) = delete;
    SupportText& operator=(const SupportText&) = delete;

    /// Calls `ready` with the whole text once, later. `shown` is what the window says, `record` what happened. Does
    /// nothing while an earlier text is being put together.
    void gather(const QString& shown, const std::string& record, Ready ready);

  private:
    static QString ownDoctor();
    void finish(const QString& problem);
    void endDoctor();

    QString doctor_;
    QProcess process_;
    QTimer patience_;
    QString beginning_;
    Ready ready_;
};

}  // namespace kestrav
