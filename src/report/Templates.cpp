#include "report/Templates.h"

#include "base/Paths.h"
#include "config/RunLog.h"
#include "config/clsGrapherConfig.h"
#include "definitions/TemplateFile.h"
#include "report/OutputTree.h"

#include <QRandomGenerator>
#include <QRegularExpression>
#include <QUrl>

#include <array>

namespace {

/// Copies a text with its permitted markup to a page.
class KeptTags
{
public:
    explicit KeptTags(QString &page)
        : m_page(page)
    {}

    /// Writes the tag at a position of a text, and returns its length; 0 when there is none or it
    /// is not permitted: it needs a plain name, and an end tag an open element.
    qsizetype take(const QString &text, qsizetype at)
    {
        static const QRegularExpression form(
            QStringLiteral("<(?:br */?|(/?)(b|i|u|em|strong|small|sub|sup|code) *)>"),
            QRegularExpression::CaseInsensitiveOption);
        const QRegularExpressionMatch tag =
            form.match(text, at, QRegularExpression::NormalMatch,
                       QRegularExpression::AnchorAtOffsetMatchOption);
        if (!tag.hasMatch())
            return 0;
        const QString name = tag.captured(2).toLower();
        if (!tag.capturedView(1).isEmpty()) {
            const qsizetype begin = m_open.lastIndexOf(name);
            if (begin < 0)
                return 0;
            closeDownTo(begin);
        } else {
            if (m_open.size() == maxNested)
                return 0;
            if (!name.isEmpty())
                m_open.append(name);
            m_page += tag.capturedView();
        }
        return tag.capturedLength();
    }

    void closeDownTo(qsizetype level)
    {
        while (m_open.size() > level)
            m_page += QStringLiteral("</%1>").arg(m_open.takeLast());
    }

private:
    static constexpr qsizetype maxNested = 16; ///< more is not formatting
    QString &m_page;
    QStringList m_open;
};

/// Whether a browser could read a "<" as the start of markup, by what comes after it: at the end of
/// a text that is the template's, and a damaged character may become anything.
bool couldBeginMarkup(QStringView behind)
{
    if (behind.isEmpty() || behind.front() > u'~')
        return true;
    const QChar next = behind.front();
    return next.isLetter() || next == u'/' || next == u'!' || next == u'?';
}

QString safeMarkup(const QString &text)
{
    QString safe;
    safe.reserve(text.size() + 32);
    KeptTags tags(safe);
    for (qsizetype at = 0; at < text.size(); ++at) {
        const QChar c = text[at];
        if (c == u'"') {
            safe += QLatin1String("&quot;");
        } else if (c == u'\'') {
            safe += QLatin1String("&#39;");
        } else if (c != u'<') {
            safe += c;
        } else if (const qsizetype length = tags.take(text, at); length > 0) {
            at += length - 1;
        } else {
            safe += couldBeginMarkup(QStringView(text).mid(at + 1)) ? QLatin1String("&lt;")
                                                                    : QLatin1String("<");
        }
    }
    tags.closeDownTo(0);
    return safe;
}

/// 128 bits of the system's randomness.
QString newNonce()
{
    std::array<quint32, 4> bits{};
    QRandomGenerator::system()->fillRange(bits.data(), bits.size());
    const auto bytes =
        QByteArray::fromRawData(reinterpret_cast<const char *>(bits.data()), sizeof bits);
    return QString::fromLatin1(
        bytes.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals));
}

} // namespace

PageValue::PageValue(const QString &text)
    : m_markup(safeMarkup(text))
{}

PageValue PageValue::html(const QString &markup)
{
    PageValue value;
    value.m_markup = markup;
    return value;
}

PageValue PageValue::plain(const QString &text)
{
    return QString(text).replace(u'&', QLatin1String("&amp;")).replace(u'<', QLatin1String("&lt;"));
}

Placeholders onNewPage(const Placeholders &values)
{
    Placeholders all = {{QLatin1String("page.lang"), pageLanguage()},
                        {QLatin1String("page.nonce"), newNonce()}};
    all.insert(all.end(), values.begin(), values.end());
    return all;
}

QString GetHTIPart(const QString &text, QLatin1String marker, bool before)
{
    const qsizetype at = text.indexOf(marker);
    if (before)
        return at < 0 ? text : text.left(at);
    const qsizetype behind = at + marker.size();
    if (at < 0 || text.size() - behind < 2)
        return QString();
    return text.mid(behind) + u' ';
}

QString fillTemplate(const QString &text, const Placeholders &values)
{
    static constexpr QLatin1String fence("%%");
    const QStringView view(text);
    QString filled;
    filled.reserve(text.size() + 64);
    qsizetype done = 0;
    qsizetype at = text.indexOf(fence);
    while (at >= 0) {
        const QStringView behind = view.mid(at + fence.size());
        qsizetype next = at + 1;
        for (const auto &[name, value] : values) {
            if (behind.startsWith(name) && behind.mid(name.size()).startsWith(fence)) {
                filled += view.mid(done, at - done);
                filled += value.markup();
                next = done = at + name.size() + 2 * fence.size();
                break;
            }
        }
        at = text.indexOf(fence, next);
    }
    filled += view.mid(done);
    return filled;
}

ListParts fillListTemplate(const QString &text, QLatin1String marker, const Placeholders &values)
{
    return {fillTemplate(GetHTIPart(text, marker, true), values),
            fillTemplate(GetHTIPart(text, marker, false), values)};
}

QString linkText(const QString &name)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(name));
}

void clsChartOutputBuilder::LoadTOCTemplates(const clsGrapherConfig &settings, const RunLog &log)
{
    const QString folder = NormalizeFolder(settings.PTH_Config());
    const auto read = [&](const QString &name, std::optional<Error> &firstError) {
        try {
            return readTemplate(folder + name);
        } catch (const Error &error) {
            const QString text = QStringLiteral("Error loading template '%1' ").arg(name);
            log.status(text + errorTail(error));
            if (!firstError)
                firstError =
                    Error(error.number, text.trimmed() + QLatin1String(": ") + error.description);
            return QString();
        }
    };
    m_masterError.reset();
    m_reportError.reset();
    TOC = read(settings.TIN_TOC, m_masterError);
    TOC_ReportItem = read(settings.TIN_TOC_ReportItem, m_masterError);
    const auto load = [&](const QString &name) { return read(name, m_reportError); };
    REPORT = load(settings.TIN_REPORT);
    REP_TOC = load(settings.TIN_REP_TOC);
    REP_DeviceItem = load(settings.TIN_REP_DeviceItem);
    REP_Top = load(settings.TIN_REP_Top);
    REP_Summary = load(settings.TIN_REP_Summary);
    STATE_Detail = load(settings.TIN_STATE_Detail);
    STATE_DetailItem = load(settings.TIN_STATE_DetailItem);
    COUNT_Detail = load(settings.TIN_COUNT_Detail);
    COUNT_DetailItem = load(settings.TIN_COUNT_DetailItem);
    DEV_Rep = load(settings.TIN_DEV_Rep);
    VARB_Item = load(settings.TIN_VARB_Item);
}

void clsChartOutputBuilder::requireMasterTemplates() const
{
    if (m_masterError)
        throw *m_masterError;
}

void clsChartOutputBuilder::requireReportTemplates() const
{
    if (m_reportError)
        throw *m_reportError;
}

void PageText::write(const QString &piece)
{
    m_text += piece;
    m_text += QLatin1String("\r\n");
}
