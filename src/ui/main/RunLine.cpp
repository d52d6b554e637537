#include "ui/main/RunLine.h"

#include "base/Durations.h"
#include "base/Numbers.h"
#include "base/OneLine.h"

#include <QStringList>

#include <algorithm>

QString runLine(const Progress &progress, qint64 elapsed)
{
    const int all = std::max(progress.all, 0);
    const int done = std::clamp(progress.done, 0, all);
    QStringList parts = {progress.report, progress.device};
    QString left =
        QStringLiteral("%1 of %2 data items").arg(groupedNumber(done, 0), groupedNumber(all, 0));
    if (done > 0 && done < all)
        left += QStringLiteral(", about %1 left")
                    .arg(durationText(elapsed * (all - done) / done / 1000));
    parts.append(all > 0 ? left : QString());
    parts.removeAll(QString());
    return oneLine(parts.join(QStringLiteral(" \u2013 ")));
}
