#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

/// Encodings and parts of MIME (RFC 2045 to 2047, 2231). Pure functions, safe on any thread.

/// A text of any line ends with CR LF line ends, in lines of at most 76 characters.
QByteArray quotedPrintable(const QByteArray &text);

/// Base64 in lines of 76 characters with CR LF line ends.
QByteArray base64Lines(const QByteArray &bytes);

/// `filename="name"`, in the encoded form where the name is not plain ASCII.
QByteArray fileNameParameter(const QString &name);

struct MimePart
{
    QList<QByteArray> headers; ///< without line ends
    QByteArray content;        ///< encoded

    QByteArray bytes() const;
};

/// `boundary` must occur in no part.
MimePart multipart(const QByteArray &kind, const QByteArray &boundary,
                   const QList<MimePart> &parts);
