# The sources of the module use only what Qt 4.8 and Qt 5 both have: headers from a list of what is allowed, and no
# name from a list of what came later or went away.
# Usage: tclsh qt_calls.tcl <source folder>...
source [file join [file dirname [info script]] ../../tcl/files.tcl]
set allowedHeaders {QByteArray QFile QFileInfo QList QRegExp QString QStringList}
set deniedNames {
    {\m(fromAscii|toAscii)\M} {\mQ(String|ByteArray)Literal\M} {\mQRegularExpression\w*\M} {\mQString(View|Ref)\M}
    {\m(qAsConst|qOverload|qEnvironmentVariable\w*|qUtf8Printable|qInfo|Q_FALLTHROUGH|QSaveFile|QVersionNumber)\M}
    {\mQFileInfo::exists\M} {\masprintf\M} {\mtoHtmlEscaped\M} {\msplitRef\M} {\mQt::(Skip|Keep)EmptyParts\M}
    {\m(chopped|isUpper|isLower|isValidUtf16|toStdU\w+|fromStdU\w+|toSecsSinceEpoch)\M} {\mQStandardPaths\M}
    {\.(crbegin|crend|shrink_to_fit|constFirst|constLast|leftRef|midRef|rightRef)\(} {\mQT_VERSION\M}
    {\mQString(\s+\w+)?\(\s*"}
}

proc violations {code allowed denied} {
    set found {}
    foreach {- header} [regexp -all -inline -line {^\s*#\s*include\s*<([Qq]\w[\w/]*)>} $code] {
        if {$header ni $allowed} { lappend found "<$header>" }
    }
    regsub -all -line {(//|^\s*#\s*include).*$} $code {} code
    foreach pattern $denied {
        if {[regexp $pattern $code match]} { lappend found $match }
    }
    return $found
}

# The check must be able to fail.
set sample "#include <QRegularExpression>\n#include <QString>\nQString s = QStringLiteral(\"x\").toAscii(); // asprintf"
if {[violations $sample $allowedHeaders $deniedNames] ne {<QRegularExpression> toAscii QStringLiteral}} {
    puts stderr "the check itself does not work: [violations $sample $allowedHeaders $deniedNames]"
    exit 1
}

set wrong 0
set read 0
foreach folder $argv {
    foreach source [glob -directory $folder *.cpp *.h] {
        foreach violation [violations [contents $source] $allowedHeaders $deniedNames] {
            puts stderr "$source: $violation is not in both Qt 4.8 and Qt 5"
            incr wrong
        }
        incr read
    }
}
if {$read < 20} { puts stderr "only $read sources found"; incr wrong }
exit [expr {$wrong > 0}]
