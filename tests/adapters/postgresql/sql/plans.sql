-- A site of a call is evaluated again and again: with other parameters, in a loop, in a generic plan, in an index.
\a \t \pset null NULL
SET plan_cache_mode = force_generic_plan;
PREPARE p(text, int) AS SELECT bifun.trim($1), bifun.lpad('7', $2, '0');
EXECUTE p(' a ', 2);
EXECUTE p('b', 3);
EXECUTE p(NULL, 3);
CREATE FUNCTION pg_temp.joined() RETURNS text LANGUAGE plpgsql AS $$
DECLARE
    r text := '';
BEGIN
    FOR i IN 1..3 LOOP
        r := bifun.concat(r, bifun.dateadd(CASE i WHEN 1 THEN 'year' ELSE 'day' END, i, date '2024-01-01')::date::text);
    END LOOP;
    RETURN r;
END $$;
SELECT pg_temp.joined();
CREATE TEMP TABLE t AS SELECT i, lpad(i::text, 1 + i % 9, '*') AS s FROM generate_series(1, 3000) AS i;
CREATE INDEX ON t (bifun.trim('both', s, '*'));
ANALYZE t;
SET enable_seqscan = off;
EXPLAIN (COSTS OFF) SELECT i FROM t WHERE bifun.trim('both', s, '*') = '2996';
SELECT i FROM t WHERE bifun.trim('both', s, '*') = '2996';
-- other formats, units and digits in each row; NULL between them
SELECT bifun.to_char(d, f), bifun.trunc(d, f), bifun.substr('abcdef', n, 2), bifun.round(2.345, n) FROM (VALUES (timestamp '2024-02-29', 'YYYY', 1),
    ('2024-02-29', 'MM', 2), (NULL, 'DD', 3), ('2024-03-01', NULL, NULL), ('2024-03-01', 'MM', 2), ('2024-03-02', 'DD', -2)) AS v(d, f, n);
-- the same format in another language
SET bifun.date_language = chinese;
SELECT bifun.to_char(date '2024-02-29', 'MONTH'), bifun.to_char(date '2024-02-29', 'MONTH', 'NLS_DATE_LANGUAGE=ENGLISH');
RESET bifun.date_language;
SELECT bifun.to_char(date '2024-02-29', 'MONTH'), bifun.to_char(date '2024-02-29', 'MONTH', 'NLS_DATE_LANGUAGE=CHINESE');
