#pragma once

#include <QString>

class QWidget;

namespace rb {

class RunLoop;
class Thumbnails;

struct PreviewContext {
    RunLoop& loop;
    Thumbnails& thumbnails;
};

// A widget that shows what is in the file: a picture as large as fits, a text, a rendering by the session's
// thumbnailers (documents, films), what a folder holds; else its icon and facts. Owned by the caller.
QWidget* makePreview(const QString& path, const PreviewContext& context);

} // namespace rb
