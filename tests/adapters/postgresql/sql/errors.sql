-- What PostgreSQL can have and the library cannot, or the other way round, and what the library refuses. Statements go on behind each.
SELECT bifun.ln(-1); \echo :LAST_ERROR_SQLSTATE
SELECT bifun.ln(x) FROM (VALUES (1), (-1)) AS t(x); \echo :LAST_ERROR_SQLSTATE
SELECT bifun.abs((-9223372036854775807)::bigint - 1); \echo :LAST_ERROR_SQLSTATE
SELECT bifun.round('NaN'::numeric); \echo :LAST_ERROR_SQLSTATE
SELECT bifun.round('-Infinity'::numeric); \echo :LAST_ERROR_SQLSTATE
SELECT bifun.round(10::numeric ^ 400); \echo :LAST_ERROR_SQLSTATE
SELECT bifun.year(date '-infinity'); \echo :LAST_ERROR_SQLSTATE
SELECT bifun.year(timestamptz 'infinity'); \echo :LAST_ERROR_SQLSTATE
SELECT bifun.day(date '1582-10-10'); \echo :LAST_ERROR_SQLSTATE
SELECT bifun.year(timestamp '294276-12-31'); \echo :LAST_ERROR_SQLSTATE
SELECT bifun.last_day(date '1500-02-01'); \echo :LAST_ERROR_SQLSTATE
SELECT bifun.sec_to_time(86401); \echo :LAST_ERROR_SQLSTATE
SELECT bifun.hour(timetz '12:00+15'); \echo :LAST_ERROR_SQLSTATE
SELECT bifun.extract('century', date '2024-01-01'); \echo :LAST_ERROR_SQLSTATE
SELECT bifun.extract('hour', date '2024-01-01'); \echo :LAST_ERROR_SQLSTATE
SELECT bifun.date_add(date '2024-01-31', interval '1 month 1 day'); \echo :LAST_ERROR_SQLSTATE
SELECT bifun.next_day(date '2024-01-31', 'x'); \echo :LAST_ERROR_SQLSTATE
SELECT bifun.trim('both', 'a', 'xy'); \echo :LAST_ERROR_SQLSTATE
SELECT bifun.trim(1); \echo :LAST_ERROR_SQLSTATE
SET bifun.date_format = 'foo'; \echo :LAST_ERROR_SQLSTATE
