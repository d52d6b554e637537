#pragma once

#include "app/CheckedFile.h"

/// The part of --check that reads MailSettings.XML, whether there is a password, and the template
/// of mails. Nothing is found where there is no such file. `reports`: the ids of all reports. Main
/// thread only.
void checkMails(Findings &findings, const Ids &reports);
