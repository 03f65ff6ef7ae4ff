# Whole files, read and written.
proc contents {name} {
    set in [open $name]
    set text [read $in]
    close $in
    return $text
}

proc put {name text} {
    set out [open ./$name w]
    puts -nonewline $out $text
    close $out
}
