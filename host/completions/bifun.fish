# fish completion of bifun

set -l commands describe functions
complete -c bifun -n "not __fish_seen_subcommand_from $commands" -a describe -d 'the columns of a file'
complete -c bifun -n "not __fish_seen_subcommand_from $commands" -a functions -d 'the built-in functions'

complete -c bifun -l help -s h -d 'print help'
complete -c bifun -n '__fish_seen_subcommand_from functions' -f -a "(bifun functions 2>/dev/null | sed -n 's/^\([A-Z0-9_]*\)(.*/\1/p')"
complete -c bifun -n '__fish_seen_subcommand_from functions' -l markdown -d 'the function reference'

set -l with_files 'not __fish_seen_subcommand_from functions'
complete -c bifun -n $with_files -l format -x -a 'table csv tsv json jsonl markdown' -d 'how the result is written'
complete -c bifun -n $with_files -l output -r -F -d 'the file that the result goes to'
complete -c bifun -n $with_files -l delimiter -x -a 'comma tab semicolon bar' -d 'what separates the fields'
complete -c bifun -n $with_files -l quote -x -a 'none' -d 'what stands around fields'
complete -c bifun -n $with_files -l escape -x -a 'none' -d 'what stands before a quote that is text'
complete -c bifun -n $with_files -l comment -x -a 'none' -d 'what lines begin with that are left out'
complete -c bifun -n $with_files -l decimal -x -a 'comma point' -d 'what stands before the fraction of numbers'
complete -c bifun -n $with_files -l null -x -a 'NULL NA' -d 'fields that are NULL'
complete -c bifun -n $with_files -l quoted-nulls -d 'fields in quotes may be NULL'
complete -c bifun -n $with_files -l fill-short-rows -d 'rows with fewer fields have NULL for the rest'
complete -c bifun -n $with_files -l no-header -d 'the first line is a row'
complete -c bifun -n $with_files -l skip -x -d 'leave out the first lines'
complete -c bifun -n $with_files -l ignore-errors -d 'leave out bad rows'
complete -c bifun -n $with_files -l encoding -x -a 'utf-8 latin1 windows-1252 utf-16 gb18030 euc-kr shift_jis' -d 'the encoding of the files'
complete -c bifun -n $with_files -l types -x -d 'types of columns'
complete -c bifun -n $with_files -l set -x -d 'change a setting' -a 'charset=utf-8 charset=gb18030 charset=euc-kr case_sensitive=0
    case_sensitive=1 compatible_mode=1 compatible_mode=2 compatible_mode=3 time_zone= date_format= time_format= datetime_format=
    time_tz_format= datetime_tz_format= date_language=ENGLISH date_language=CHINESE oracle_date=0 oracle_date=1 param.529= param.650='

set -l query "not __fish_seen_subcommand_from $commands"
complete -c bifun -n $query -l sample -x -a all -d 'how much of a file decides the types'
complete -c bifun -n $query -l batch-rows -x -d 'rows evaluated at a time'
complete -c bifun -n $query -l library -r -F -d 'another library with the functions'
complete -c bifun -n $query -l version -d 'print the version'
