# The headers of the toolkit and of the language are compiled once for all targets that are built alike.
# A source includes what it uses all the same: -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON builds without.

set(norvane_standard_headers
    <algorithm> <array> <functional> <map> <memory> <optional> <string> <utility> <variant> <vector>)

# What many sources include; a header more makes each compilation slower that doesn't ask for it.
set(norvane_core_headers
    <QByteArray> <QCoreApplication> <QDateTime> <QDir> <QFile> <QFileInfo> <QHash> <QList>
    <QLoggingCategory> <QMap> <QObject> <QPointer> <QRegularExpression> <QSet> <QSettings> <QString>
    <QStringList> <QTimer> <QVariant>)
set(norvane_widget_headers
    ${norvane_core_headers}
    <QAbstractTableModel> <QApplication> <QBoxLayout> <QComboBox> <QDialog> <QFileDialog> <QGridLayout>
    <QHeaderView> <QIcon> <QKeyEvent> <QLabel> <QLineEdit> <QMainWindow> <QMessageBox> <QPainter>
    <QPushButton> <QStyle> <QTableView> <QWidget>)

# norvane_precompiled_set(<name> OPTIONS ... LINK ... HEADERS ...)
function(norvane_precompiled_set name)
    cmake_parse_arguments(ARG "" "" "OPTIONS;LINK;HEADERS" ${ARGN})
    set(source "${CMAKE_BINARY_DIR}/precompiled/${name}.cpp")
    file(CONFIGURE OUTPUT "${source}" CONTENT "// Nothing: the target holds the headers alone.\n")
    add_library(norvane_headers_${name} STATIC "${source}")
    target_link_libraries(norvane_headers_${name} PRIVATE norvane_flags ${ARG_LINK})
    target_compile_options(norvane_headers_${name} PRIVATE ${ARG_OPTIONS})
    target_precompile_headers(norvane_headers_${name} PRIVATE
        ${norvane_standard_headers} ${ARG_HEADERS})
endfunction()

norvane_precompiled_set(core LINK Qt6::Core HEADERS ${norvane_core_headers})
norvane_precompiled_set(widgets LINK Qt6::Widgets HEADERS ${norvane_widget_headers})

# norvane_precompiled(<target> <name of a set>)
function(norvane_precompiled target name)
    target_precompile_headers(${target} REUSE_FROM norvane_headers_${name})
endfunction()
