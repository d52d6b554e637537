#pragma once

#include "figures/ReportFigures.h"

#include <QStringList>

#include <vector>

/// What a report says, in words: the same for its pages, its PDF, its mail and `report.json`. All
/// texts are plain English with the names of devices and items as they are, on one line each; times
/// are those of the local zone, "2026-11-18 18:42". What they mean stands in docs/figures.md.

/// How a tile is shown.
enum class Tone { Neutral, Good, Bad };

/// A key figure.
struct StoryTile
{
    QString label;  ///< "Success rate"
    QString value;  ///< "98.53 %"
    QString detail; ///< "-0.26 points against the week before"; may be empty
    Tone tone = Tone::Neutral;
};

struct ReportStory
{
    QStringList sentences; ///< at least one; fit to be forwarded
    QString verdict;       ///< for a subject line: "98.53 %, 2 of 24 devices missed 99.5 %"
    std::vector<StoryTile> tiles;
};

/// A pure function of the figures, once they are summarized; any thread.
ReportStory storyOf(const ReportFigures &figures);

/// "98.53 %"; never "100.00 %" where a test failed, nor "0.00 %" where one succeeded: then "> 99.99
/// %" and "< 0.01 %". "no data" without tests.
QString rateText(const Availability &availability);

/// "+0.26", with a real minus sign and two decimals: percentage points of the present above the
/// preceding period. Empty where the two cannot be compared.
QString pointsText(const Availability &present, const std::optional<Availability> &preceding);

/// "99.5 %".
QString targetText(double target);

/// A name from the database for readers: on one line, and without what controls it.
QString shownName(const QString &name);

/// The wall time of a second: "2026-11-18 18:42".
QString storyTime(qint64 second);

/// Whether nothing was recorded of a device, or none of the tests that should count.
bool isWithoutData(const DeviceFigures &device);
