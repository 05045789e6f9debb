-- Which function a call finds by its types, and what it gives.
\a \t \pset null NULL
CREATE EXTENSION bifun;
SELECT bifun.length('ab  '::char(5)), bifun.length('ab'::varchar), '[' || bifun.concat('a '::char(3), 'b', 'c'::char(2)) || ']' AS concat;
SELECT pg_typeof(bifun.abs(1::smallint)), pg_typeof(bifun.abs(1)), pg_typeof(bifun.abs(1.0)), pg_typeof(bifun.abs(1::real));
SELECT pg_typeof(bifun.floor(1::bigint)), pg_typeof(bifun.round(1, 1)), pg_typeof(bifun.nvl(1, 2.5)), pg_typeof(bifun.nvl(1, 2::bigint));
SELECT bifun.greatest(1, 2, 3, 4, 5, 6, 7, 8), bifun.least(2, 1.5::float8), bifun.concat('a', 'b', 'c', NULL, 'd');
-- numbers keep the digits that they show
SELECT bifun.nvl(1.50, 0), bifun.abs(-0.00), bifun.abs(-100.000), bifun.abs(-12345678901234567890.1234567890);
-- further names
SELECT bifun.char_length('abc'), bifun.substring('abc', 2), bifun.octet_length('é');
SELECT bifun.nvl(NULL, '\x00ff'::bytea), bifun.greatest(interval '1 day', '25:00'), bifun.date_add(timestamp '2024-01-31', '1 month');
-- NULL
SELECT bifun.if(NULL, 'a', 'b'), bifun.lnnvl(NULL), bifun.extract(NULL, date '2024-01-01'), bifun.trim('both', NULL, 'a');
SELECT bifun.substr('abc', NULL, 1), bifun.nvl(NULL, 2), bifun.round(1.25, NULL);
-- everything has a comment, and nothing that depends on the session's zone is immutable
SELECT count(*) FROM pg_proc WHERE pronamespace = 'bifun'::regnamespace AND (obj_description(oid, 'pg_proc') IS NULL
    OR (provolatile = 'i' AND (1184 = ANY (proargtypes) OR prorettype = 1184)));
SELECT oid::regprocedure, proisstrict, provolatile, proparallel FROM pg_proc
    WHERE oid IN ('bifun.ln(float8)'::regprocedure, 'bifun.nvl(int, int)'::regprocedure, 'bifun.rand(float8)'::regprocedure,
        'bifun.to_char(date)'::regprocedure) ORDER BY proname;
