// Another program from which something is dragged, in whatever words a test wants.
//   dragging-program FILE TYPE ACTIONS
// A window titled "dragging-program" drags the bytes of the file under the type; the actions are letters of "cml"
// (copy, move, link), in the order of preference. Says "dragging" and then "done ACTION", a line each.

#include <QApplication>
#include <QDrag>
#include <QFile>
#include <QMimeData>
#include <QMouseEvent>
#include <QWidget>

#include <cstdio>

namespace {

void tell(const char* line) {
    std::puts(line);
    std::fflush(stdout);
}

Qt::DropAction actionOf(QChar letter) {
    return letter == QLatin1Char('c') ? Qt::CopyAction : letter == QLatin1Char('m') ? Qt::MoveAction : Qt::LinkAction;
}

class Source final : public QWidget {
public:
    Source(QByteArray bytes, QString type, const QString& actions)
        : bytes_(std::move(bytes))
        , type_(std::move(type))
        , preferred_(actionOf(actions.front())) {
        for (const QChar letter : actions) {
            actions_ |= actionOf(letter);
        }
        setWindowTitle(QStringLiteral("dragging-program"));
        resize(300, 200);
    }

protected:
    void mouseMoveEvent(QMouseEvent* event) override {
        if (dragging_ || !event->buttons().testFlag(Qt::LeftButton)) {
            return;
        }
        dragging_ = true;
        auto* contents = new QMimeData;
        contents->setData(type_, bytes_);
        auto* drag = new QDrag(this);
        drag->setMimeData(contents);
        tell("dragging");
        switch (drag->exec(actions_, preferred_)) {
        case Qt::CopyAction:
            tell("done copy");
            break;
        case Qt::LinkAction:
            tell("done link");
            break;
        case Qt::IgnoreAction:
            tell("done nothing");
            break;
        default:
            tell("done move");
            break;
        }
        dragging_ = false;
    }

private:
    QByteArray bytes_;
    QString type_;
    Qt::DropActions actions_;
    Qt::DropAction preferred_;
    bool dragging_ = false;
};

} // namespace

int main(int count, char** words) {
    QApplication application(count, words);
    const QStringList arguments = QApplication::arguments();
    constexpr int wanted = 4;
    QFile file(arguments.value(1));
    if (arguments.size() != wanted || arguments[3].isEmpty() || !file.open(QIODevice::ReadOnly)) {
        return 2;
    }
    Source source(file.readAll(), arguments[2], arguments[3]);
    source.show();
    return QApplication::exec();
}
