#include "report/StateRow.h"

#include "base/Numbers.h"

namespace {

PageValue bold(const QString &text)
{
    return PageValue::html(QLatin1String("<b>") + text + QLatin1String("</b>"));
}

Placeholders rowValues(const PageValue &label, const PageValue &successes,
                       const PageValue &failures, const PageValue &tests, const PageValue &rate,
                       const PageValue &link)
{
    return {{QLatin1String("sample.label"), label},     {QLatin1String("successcount"), successes},
            {QLatin1String("criticalcount"), failures}, {QLatin1String("totalcount"), tests},
            {QLatin1String("successrate"), rate},       {QLatin1String("sample.href"), link}};
}

} // namespace

double StateRow::rate() const
{
    return tests() == 0 ? 0 : static_cast<double>(successes) / static_cast<double>(tests()) * 100;
}

QString StateRow::rateText() const
{
    return tests() == 0 ? QStringLiteral("n/a") : fixedNumber(rate(), 2);
}

QString StateRow::filled(const QString &rowTemplate) const
{
    const PageValue href =
        PageValue::html(link.isEmpty() ? QString() : QStringLiteral(" href=\"%1\"").arg(link));
    return fillTemplate(rowTemplate,
                        rowValues(label, QString::number(successes), QString::number(failures),
                                  QString::number(tests()), rateText(), href));
}

QString StateRow::filledAsTotal(const QString &rowTemplate) const
{
    return fillTemplate(rowTemplate,
                        rowValues(bold(QStringLiteral("Total")), bold(QString::number(successes)),
                                  bold(QString::number(failures)), bold(QString::number(tests())),
                                  bold(rateText()), QString()));
}

void StateRow::addCounts(CsvText &csv) const
{
    csv.number(successes).number(failures).number(tests());
}
