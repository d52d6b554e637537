#pragma once

#include "mail/MailContent.h"

#include <QJsonObject>

/// Adds what a report.json (docs/report.schema.json) says: verdict, sentences, figures, and the
/// devices that need attention.
void tellFigures(MailContent &content, const QJsonObject &report);
