#include "ui/AboutBox.h"

#include "project/ProgramInfo.h"
#include "ui/AppIcon.h"

#include <QMessageBox>

namespace kilnova {

QString AboutBox::text()
{
    // The Qt version the program was built with is shown too when it differs: a report of a fault
    // then says which of the two was in play.
    QString qt = ProgramInfo::qtVersion();
    if (qt != QLatin1String(QT_VERSION_STR))
        qt += QStringLiteral(" (built with %1)").arg(QLatin1String(QT_VERSION_STR));
    return QStringLiteral("<h3>Kilnova %1</h3>"
                          "<p>Raw-material planning for the cement plant.</p>"
                          "<p>Copyright &copy; %2<br>Licence: %3 (%4).<br>"
                          "There is NO WARRANTY, to the extent permitted by law.</p>"
                          "<p>Qt %5<br>SQLite %6</p>")
        .arg(ProgramInfo::version(), ProgramInfo::copyright().toHtmlEscaped(),
             ProgramInfo::licenceName().toHtmlEscaped(), ProgramInfo::licence(), qt,
             ProgramInfo::sqliteVersion());
}

std::unique_ptr<QMessageBox> AboutBox::create(QWidget* parent)
{
    auto box = std::make_unique<QMessageBox>(parent);
    box->setWindowTitle(QObject::tr("About Kilnova"));
    box->setTextFormat(Qt::RichText);
    box->setText(text());
    box->setIconPixmap(AppIcon::pixmap(64));
    box->setStandardButtons(QMessageBox::Ok);
    box->setObjectName(QStringLiteral("about"));
    return box;
}

} // namespace kilnova
