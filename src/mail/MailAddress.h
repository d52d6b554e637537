#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

/// Addresses and header texts of mails (RFC 5322, RFC 2047). Pure functions, safe on any thread.

/// A mailbox: `name` is for people and may be empty, `address` is "local@domain" in ASCII; a domain
/// in other letters has become its ASCII form.
struct MailAddress
{
    QString name;
    QString address;

    /// As lists show and take it: `Name <a@b>`, the name in quotes where it needs them.
    QString text() const;
    /// As a header has it: the name encoded where it is not plain ASCII.
    QByteArray header() const;
};

/// Reads `a@b`, `Name <a@b>` or `"Name" <a@b>`. Throws Error(TypeMismatch) that says what is wrong.
/// Letters outside of ASCII before the "@" are refused: few servers carry them to the end.
MailAddress mailAddress(const QString &text);

/// Reads a list, separated by commas, semicolons or line breaks; empty entries are left out. Throws
/// Error(TypeMismatch) that names the first entry that is no address, or is there twice.
std::vector<MailAddress> mailAddresses(const QString &text);

/// The list as mailAddresses reads it, separated by ", ".
QString addressListText(const std::vector<MailAddress> &addresses);

/// A header line without its line end: "Subject: text". The text becomes one line without control
/// characters; what is not plain ASCII or too long for a line is encoded and folded.
QByteArray textHeader(const QByteArray &name, const QString &text);

/// A header line with the addresses, one a line.
QByteArray addressHeader(const QByteArray &name, const std::vector<MailAddress> &addresses);
