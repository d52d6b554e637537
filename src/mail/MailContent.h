#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <vector>

/// What a mail says, before it takes the form of a mail. All texts are untrusted.

enum class MailTone { Neutral, Good, Bad };

struct MailFile
{
    QString name;
    QByteArray type; ///< "image/png"
    QByteArray bytes;
    QString description = {}; ///< of an image: what it shows
};

struct MailRow
{
    QString label;
    QString value;
    QString note = {};
};

struct MailContent
{
    QString subject;
    QString title;
    QString period; ///< empty: none
    QString verdict;
    MailTone tone = MailTone::Neutral;
    QStringList sentences;
    std::vector<MailRow> figures;
    std::vector<MailRow> devices; ///< those that need attention, the worst first
    std::vector<MailFile> images; ///< shown in the text
    std::vector<MailFile> attachments;
    QString pages;     ///< where the whole report is: an address "https://..." or a path
    QStringList notes; ///< what readers have to know beside, such as what is not attached
    QString reason;    ///< why they get this mail
};

/// Leaves out what makes a message larger than `maxBytes` once it is encoded: images first come
/// first, then attachments. Notes say what an attachment that was left out is and where it lies.
void fitInto(MailContent &content, qint64 maxBytes, const QString &folder);
