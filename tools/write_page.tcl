# The manual as one page that loads nothing: the pages that docs/README.md lists, in its order, with links between them;
# and the check of all links in the tree's Markdown.
#
#   tclsh tools/write_page.tcl <root of the tree> check
#   tclsh tools/write_page.tcl <root of the tree> <docs of the build> <cmark-gfm> <output.html>
package require Tcl 8.6

proc readFile {file} {
    set in [open $file]
    fconfigure $in -encoding utf-8
    set text [read $in]
    close $in
    return $text
}

# What a heading is called in a link: lower case, words joined by "-", as the usual viewers of Markdown do it.
proc anchor {title} {
    set title [regsub -all {\[([^\]]*)\]\([^)]*\)} $title {\1}]
    return [string map {{ } -} [regsub -all {[^a-z0-9 _-]} [string tolower [string trim $title]] {}]]
}

proc withoutCode {markdown} {
    set text ""
    set code 0
    foreach line [split $markdown \n] {
        if {[string match ```* $line]} {set code [expr {!$code}]} elseif {!$code && ![string match "    *" $line]} {
            append text [regsub -all {`[^`]*`} $line {}] \n
        }
    }
    return $text
}

proc anchorsOf {file} {
    set anchors {}
    foreach line [split [readFile $file] \n] {
        if {[regexp {^#+ (.*)$} $line -> title]} {lappend anchors [anchor [string map {` {}} $title]]}
    }
    return $anchors
}

# Every link of a file that leads nowhere.
proc brokenLinks {file} {
    set broken {}
    foreach {all target} [regexp -all -inline {\]\(([^)\s]+)\)} [withoutCode [readFile $file]]] {
        if {[regexp {^[a-z]+:} $target]} continue
        lassign [split $target #] path place
        set other [expr {$path eq "" ? $file : [file join [file dirname $file] $path]}]
        if {![file exists $other]} {
            lappend broken "$file: $target: no such file"
        } elseif {$place ne "" && $place ni [anchorsOf $other]} {
            lappend broken "$file: $target: no such heading"
        }
    }
    return $broken
}

set arguments [lassign $argv root]
set docs [file join $root docs]
if {$arguments eq "check"} {
    set files [concat [glob [file join $root *.md]] [glob [file join $docs *.md]] [glob [file join $root examples * README.md]]]
    set broken [concat {*}[lmap file $files {brokenLinks $file}]]
    if {[llength $broken]} {
        puts stderr [join $broken \n]
        exit 1
    }
    puts "[llength $files] files, no broken link"
    exit
}

# The page of docs/ as HTML; where the build has filled in tables, the page of the build.
proc pageHtml {name} {
    set file [file join $::built $name.md]
    if {![file exists $file]} {set file [file join $::docs $name.md]}
    set in [open |[list $::cmark -e table $file]]
    fconfigure $in -encoding utf-8
    set html [read $in]
    close $in
    return $html
}

lassign $arguments built cmark output
set names {}
foreach {all name} [regexp -all -inline {\]\(([a-z_-]+)\.md\)} [readFile [file join $docs README.md]]] {lappend names $name}
lappend names reference options
set body ""
set contents ""
foreach name $names {
    set html [pageHtml $name]
    # Headings get names, the page's own in front, as one page now holds them all; each goes down by a level.
    set done ""
    while {[regexp -indices {<h([1-5])>(.*?)</h[1-5]>} $html whole level title]} {
        append done [string range $html 0 [lindex $whole 0]-1]
        set depth [string range $html {*}$level]
        set text [string range $html {*}$title]
        set id $name[expr {$depth == 1 ? "" : "-[anchor [regsub -all {<[^>]*>} $text {}]]"}]
        append done "<h[expr {$depth + 1}] id=\"$id\">$text</h[expr {$depth + 1}]>"
        if {$depth == 1} {append contents "<li><a href=\"#$id\">$text</a></li>\n"}
        set html [string range $html [lindex $whole 1]+1 end]
    }
    append done $html
    # Links within the manual; what leads out of it stays as text.
    set done [regsub -all {<a href="#([^"]*)">} $done "<a href=\"#$name-\\1\">"]
    set done [regsub -all {<a href="([a-z_-]+)\.md#([^"]*)">} $done {<a href="#\1-\2">}]
    set done [regsub -all {<a href="([a-z_-]+)\.md">} $done {<a href="#\1">}]
    append body [regsub -all {<a href="(?!#|[a-z]+:)[^"]*">(.*?)</a>} $done {<em>\1</em>}]
}
set known [regexp -all -inline {id="([^"]*)"} $body]
foreach {all target} [regexp -all -inline {href="#([^"]*)"} $body] {
    if {"id=\"$target\"" ni $known} {error "the page has no place \"$target\""}
}
set out [open $output w]
fconfigure $out -encoding utf-8
puts $out "<!DOCTYPE html>
<html lang=\"en\">
<head>
<meta charset=\"utf-8\">
<meta name=\"viewport\" content=\"width=device-width\">
<title>ost_tclwrapper: manual</title>
<style>
  body { font: 15px/1.5 sans-serif; color: #222; max-width: 60em; margin: 1.5em auto; padding: 0 1em; }
  h2 { border-bottom: 1px solid #ccc; margin-top: 2.5em; }
  table { border-collapse: collapse; display: block; overflow-x: auto; } td, th { border: 1px solid #ddd; padding: 2px 8px;
    text-align: left; vertical-align: top; }
  pre { background: #f4f5f7; padding: 8px; overflow-x: auto; } code { font-size: 13px; }
</style>
</head>
<body>
<h1>ost_tclwrapper: manual</h1>
<ul>
$contents</ul>
$body</body>
</html>"
close $out
puts "$output: [llength $names] pages"
