#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>

#include "benchmarks/json/Peer.h"

namespace kestrav::benchmark {
namespace {

class QtPeer final : public Peer {
  public:
    std::string_view name() const override { return "Qt"; }
    bool parse(const std::string& text) override {
        QJsonParseError error{};
        document_ =
            QJsonDocument::fromJson(QByteArray::fromRawData(text.data(), static_cast<qsizetype>(text.size())), &error);
        return error.error == QJsonParseError::NoError;
    }
    void drop() override { document_ = QJsonDocument(); }
    std::size_t serialise() override {
        return static_cast<std::size_t>(document_.toJson(QJsonDocument::Compact).size());
    }
    void prepare(const std::vector<Path>& paths) override {
        paths_.clear();
        for (const Path& path : paths) {
            std::vector<std::variant<qsizetype, QString>> keys;
            for (const Step& step : path) {
                if (const auto* key = std::get_if<std::string>(&step)) {
                    keys.emplace_back(QString::fromStdString(*key));
                } else {
                    keys.emplace_back(static_cast<qsizetype>(std::get<std::int64_t>(step)));
                }
            }
            paths_.push_back(std::move(keys));
        }
    }
    std::size_t lookUp() override {
        std::size_t sum = 0;
        for (const auto& path : paths_) {
            QJsonValue at = document_.isArray() ? QJsonValue(document_.array()) : QJsonValue(document_.object());
            for (const auto& step : path) {
                if (const auto* key = std::get_if<QString>(&step)) {
                    at = at.toObject().value(*key);
                } else {
                    at = at.toArray().at(std::get<qsizetype>(step));
                }
            }
            sum += static_cast<std::size_t>(at.toString().size());
        }
        return sum;
    }

  private:
    QJsonDocument document_;
    std::vector<std::vector<std::variant<qsizetype, QString>>> paths_;
};

}  // namespace

std::unique_ptr<Peer> makeQtPeer() {
    return std::make_unique<QtPeer>();
}

}  // namespace kestrav::benchmark
