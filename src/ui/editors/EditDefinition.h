#pragma once

#include "definitions/clsGraphDef.h"
#include "definitions/clsScheduleDef.h"

class QWidget;

/// The editor of a chart or a schedule, which is saved on OK; true when it was. Says which reports
/// the change is for: those that use the definition, but for the one of the id `besides`.
bool editChart(const clsGraphDef &chart, QWidget *parent, const QString &besides = {});
bool editSchedule(const clsScheduleDef &schedule, QWidget *parent, const QString &besides = {});
