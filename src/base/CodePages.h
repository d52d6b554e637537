#pragma once

#include <QByteArrayView>
#include <QString>

#include <optional>

/// Text in a Windows code page; bytes without a character are read as control characters, as
/// Windows does. Null for a code page that is not known. Safe on any thread.
std::optional<QString> codePageText(QByteArrayView bytes, int codePage);
