#pragma once

#include <QString>

#include <optional>

/// Secrets that only this user, and services started for this user, may read. On Windows the file
/// is encrypted for the user (Data Protection), elsewhere it has the mode 0600. All functions name
/// the file in their errors, never the secret. Safe on any thread.
namespace platform {

/// The secret in a file; where the system hands this process a credential of the given name, that
/// one ($CREDENTIALS_DIRECTORY, see systemd.exec). Null: there is neither. Throws Error when it
/// cannot be read, is empty, and when other users may read the file.
std::optional<QString> readSecret(const QString &path, const QString &credential);

/// Writes the file; the folder has to exist. Throws Error.
void saveSecret(const QString &path, const QString &secret);

} // namespace platform
